#pragma once

#include <cstdint>
#include <mutex>

#include "base/dyn_string.h"
#include "filter/video_input_pin.h"
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

// The video filter: frames the YUY2 picture for a TV (borders, cuts, bands, flips, shift),
// converts it to RGB when the renderer asks, and draws subtitles and the clock over it.
class VideoFilter : public host::TransformFilter {
 public:
  // Border rewrites after every change that can leave stale pixels in the borders.
  static constexpr int32_t kBorderRefreshFrames = 3;

  // With the settings stored in the registry.
  VideoFilter();
  // With the given settings; the clock reads the time of day from `timeSource` when given.
  explicit VideoFilter(const Settings& settings, ClockOverlay::TimeSource timeSource = {});
  ~VideoFilter() override;

  host::BasePin* GetPin(int index) override;
  host::HRESULT Transform(host::IMediaSample* in, host::IMediaSample* out) override;
  host::HRESULT CheckInputType(const host::AM_MEDIA_TYPE& type) override;
  host::HRESULT CheckTransform(const host::AM_MEDIA_TYPE& in,
                               const host::AM_MEDIA_TYPE& out) override;
  host::HRESULT DecideBufferSize(host::IMemAllocator* allocator,
                                 host::ALLOCATOR_PROPERTIES* request) override;
  host::HRESULT GetMediaType(int position, host::AM_MEDIA_TYPE* type) override;
  host::HRESULT CompleteConnect(host::PIN_DIRECTION direction, host::IPin* pin) override;
  host::HRESULT NewSegment(host::REFERENCE_TIME start, host::REFERENCE_TIME stop,
                           double rate) override;

  // Restyles the subtitle and clock renderers from the settings and makes the next frame
  // draw its subtitle anew.
  void ApplyStyles();
  // Loads a subtitle file into the track: 0, or -1 when no reader takes it (the track is
  // then empty).
  int LoadSubtitles(const char* path);

  VideoInputPin* VideoInput();
  std::recursive_mutex& FrameLock() { return frameLock; }

  // Guarded by frameLock while the filter runs.
  Settings settings;
  int32_t borderRefresh = kBorderRefreshFrames;
  int32_t lastSubtitleState = -1;
  int32_t lastClockState = -1;
  SubtitleTrack track;
  ClockOverlay clock;
  DynString sourceFileName;
  int32_t frameDuration = 0;
  int32_t detectedFrameDuration = 0;
  float sourceAspect = 0;
  int32_t durationMs = 0;
  host::REFERENCE_TIME segmentStart = 0;
  const ColorTables colorTables;

 private:
  TextRenderer& SubtitleImage();
  bool OverlaysShown() const;
  void UpdateSourceAspect();
  int32_t MediaDurationMs();
  void ReadConnectionTimes(int32_t mediaDurationMs);
  // The steps of Transform. AdoptInputType answers false when the frame ends there with
  // `*result` (a refused type drops it).
  bool AdoptInputType(host::IMediaSample* in, host::HRESULT* result);
  void AdoptOutputType(host::IMediaSample* out);
  void UpdateOverlays(host::IMediaSample* in, host::IMediaSample* out, const FrameGeometry& g,
                      int32_t* subtitleState, int32_t* clockState);
  void DrawPicture(host::IMediaSample* in, host::IMediaSample* out, const FrameGeometry& g,
                   int32_t subtitleState, int32_t clockState);

  // Re-entrant: guards the settings copy, track, clock and frame state; always taken inside
  // the host's own locks.
  std::recursive_mutex frameLock;
};

// The change rule: an overlay image that is new, comes on screen or leaves it restarts
// the border refresh; one that merely stays does not.
bool OverlayChangeNeedsRefresh(int32_t newState, int32_t lastState);

}  // namespace korvalin
