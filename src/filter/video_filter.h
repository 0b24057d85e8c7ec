#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "base/dyn_string.h"
#include "filter/filter_settings.h"
#include "filter/video_input_pin.h"
#include "framerate/rate_clock.h"
#include "host/property_page_interfaces.h"
#include "host/transform_filter.h"
#include "render/clock_overlay.h"
#include "render/text_renderer.h"
#include "settings/settings.h"
#include "subtitles/subtitle_track.h"
#include "video/color_tables.h"
#include "video/frame_geometry.h"

namespace korvalin {

inline constexpr host::CLSID CLSID_VideoFilter =
    host::MakeGuid("9D2935C7-3D8B-4EF6-B0D1-C14064698794");

// The fourth byte of RGB32 picture pixels: 0 as renderers that ignore it are given, or
// 0xFF for pipelines whose converters read it as alpha.
enum class Rgb32Padding : uint8_t { kZero = 0, kOpaque = 0xFF };

// A copy of the filter's frame state, for tests and diagnostics.
struct FrameStateView {
  int32_t borderRefresh = 0;
  int32_t lastSubtitleState = -1;
  int32_t lastClockState = -1;
  int32_t frameDuration = 0;
  int32_t detectedFrameDuration = 0;
  int32_t durationMs = 0;
  std::string sourceFileName;
  std::size_t subtitleEntries = 0;
};

// The video filter: frames the YUY2 picture for a TV (borders, cuts, bands, flips, shift),
// converts it to RGB when the renderer asks, and draws subtitles and the clock over it. In a
// graph it finds its film's subtitles, decides by its load mode whether it stays, and offers
// a faster clock for films it plays at 25 fps.
//
// Its state is private and guarded by the frame lock; the user interface reaches it only
// through IFilterSettings.
class VideoFilter : public host::TransformFilter,
                    public IFilterSettings,
                    public host::ISpecifyPropertyPages {
 public:
  // Border rewrites after every change that can leave stale pixels in the borders.
  static constexpr int32_t kBorderRefreshFrames = 3;

  // With the settings stored in the registry.
  VideoFilter();
  // With the stored settings, writing RGB32 with `padding`.
  explicit VideoFilter(Rgb32Padding padding);
  // With the given settings; the clock reads the time of day from `timeSource` when given.
  explicit VideoFilter(const Settings& settings, ClockOverlay::TimeSource timeSource = {},
                       Rgb32Padding padding = Rgb32Padding::kZero);
  ~VideoFilter() override;

  host::HRESULT NonDelegatingQueryInterface(const host::IID& iid, void** out) override;

  // The transform (video_filter_transform.cpp, media types in video_filter.cpp).
  host::BasePin* GetPin(int index) override;
  host::HRESULT Transform(host::IMediaSample* in, host::IMediaSample* out) override;
  host::HRESULT CheckInputType(const host::AM_MEDIA_TYPE& type) override;
  host::HRESULT CheckTransform(const host::AM_MEDIA_TYPE& in,
                               const host::AM_MEDIA_TYPE& out) override;
  host::HRESULT DecideBufferSize(host::IMemAllocator* allocator,
                                 host::ALLOCATOR_PROPERTIES* request) override;
  host::HRESULT GetMediaType(int position, host::AM_MEDIA_TYPE* type) override;
  host::HRESULT NewSegment(host::REFERENCE_TIME start, host::REFERENCE_TIME stop,
                           double rate) override;

  // Life in a graph (video_filter_graph.cpp).
  host::HRESULT CompleteConnect(host::PIN_DIRECTION direction, host::IPin* pin) override;
  host::HRESULT JoinFilterGraph(host::IFilterGraph* graph, std::u16string_view name) override;
  host::HRESULT SetSyncSource(host::IReferenceClock* clock) override;
  host::HRESULT GetPages(host::CAUUID* pages) override;
  // Whether the filter has work to do in load mode "Only if necessary" (always in "Always"
  // and "Force").
  bool IsNeeded();
  // In "Force", splices the unused filter in front of the "Overlay Mixer".
  void InsertBeforeMixer();
  // The clock's rate from the frame duration; true when the film plays faster.
  bool UpdateClockRate();
  // The source frame duration the clock plays as 40 ms; 0 while it runs at real time or
  // when the filter has no clock of its own.
  int32_t ClockRate();

  // IFilterSettings (video_filter_settings.cpp).
  host::HRESULT SetSettings(const Settings* settings) override;
  host::HRESULT GetSubtitleInfo(char* file, std::size_t fileSize, char* format,
                                std::size_t formatSize, char* languages,
                                std::size_t languagesSize, int32_t* index) override;
  host::HRESULT SelectSubtitle(const char* file, const char* language) override;
  host::HRESULT GetFrameDurations(int32_t* current, int32_t* detected) override;
  host::HRESULT FindSubtitleFiles(OwningPtrArray<DynString>* files) override;

  // Restyles the subtitle and clock renderers from the settings and makes the next frame
  // draw its subtitle anew.
  void ApplyStyles();

  // For a filter that only answers questions (what it would make of a format): it never
  // appears on the desktop (no stream object, no tray icon). Call before it joins a graph.
  void StayOffTheDesktop() { offDesktop_ = true; }

  FrameStateView FrameState();
  VideoInputPin* VideoInput();

 private:
  TextRenderer& SubtitleImage();
  bool OverlaysShown() const;
  void UpdateSourceAspect();
  int32_t MediaDurationMs();
  void ReadConnectionTimes(int32_t mediaDurationMs);
  void AutoLoadSubtitles();
  void StopTray();
  // The steps of Transform. AdoptInputType answers false when the frame ends there with
  // `*result` (a refused type drops it).
  bool AdoptInputType(host::IMediaSample* in, host::HRESULT* result);
  void AdoptOutputType(host::IMediaSample* out);
  void UpdateOverlays(host::IMediaSample* in, host::IMediaSample* out, const FrameGeometry& g,
                      int32_t* subtitleState, int32_t* clockState);
  void DrawPicture(host::IMediaSample* in, host::IMediaSample* out, const FrameGeometry& g,
                   int32_t subtitleState, int32_t clockState);

  // Re-entrant: guards everything below; always taken inside the host's own locks.
  std::recursive_mutex frameLock_;
  Settings settings_;
  int32_t borderRefresh_ = kBorderRefreshFrames;
  int32_t lastSubtitleState_ = -1;
  int32_t lastClockState_ = -1;
  SubtitleTrack track_;
  ClockOverlay clock_;
  DynString sourceFileName_;
  int32_t frameDuration_ = 0;
  int32_t detectedFrameDuration_ = 0;
  float sourceAspect_ = 0;
  int32_t durationMs_ = 0;
  host::REFERENCE_TIME segmentStart_ = 0;
  const ColorTables colorTables_;
  // Made when the filter converts frame rates; handed out as its IReferenceClock.
  host::ComPtr<RateClock> rateClock_;
  bool trayStarted_ = false;
  bool offDesktop_ = false;
};

// The change rule: an overlay image that is new, comes on screen or leaves it restarts
// the border refresh; one that merely stays does not.
bool OverlayChangeNeedsRefresh(int32_t newState, int32_t lastState);

}  // namespace korvalin
