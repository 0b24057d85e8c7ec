// The filter's life in a graph: joining and leaving it, its input connection (the film's
// file, automatic subtitles, the load mode, the frame rate), and the clock.
#include "base/saturating_cast.h"
#include "filter/filter_settings.h"
#include "filter/graph_search.h"
#include "filter/page_ids.h"
#include "filter/source_file_name.h"
#include "filter/tray_hooks.h"
#include "filter/video_filter.h"
#include "filter/video_format_conversion.h"
#include "framerate/audio_filter_insertion.h"
#include "host/pin_helpers.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {

using namespace host;

namespace {

constexpr int32_t kLoadAlways = 0;
constexpr int32_t kLoadNever = 1;
constexpr int32_t kLoadIfNeeded = 2;
constexpr int32_t kLoadForce = 3;

}  // namespace

HRESULT VideoFilter::JoinFilterGraph(IFilterGraph* graph, std::u16string_view name) {
  if (graph == nullptr) {
    StopTray();
    return TransformFilter::JoinFilterGraph(nullptr, name);
  }
  if (settings_.LoadMode == kLoadNever) return E_FAIL;
  const HRESULT hr = TransformFilter::JoinFilterGraph(graph, name);
  if (SUCCEEDED(hr) && !trayStarted_ && !offDesktop_) {
    if (TrayHooks* hooks = CurrentTrayHooks()) {
      hooks->StartTray(static_cast<IBaseFilter*>(this), settings_.SysTrayIcon != 0);
      trayStarted_ = true;
    }
  }
  return hr;
}

void VideoFilter::StopTray() {
  if (!trayStarted_) return;
  trayStarted_ = false;
  if (TrayHooks* hooks = CurrentTrayHooks()) hooks->StopTray(static_cast<IBaseFilter*>(this));
}

HRESULT VideoFilter::GetPages(CAUUID* pages) {
  if (!pages) return E_POINTER;
  static constexpr const CLSID* kPages[] = {&CLSID_PicturePage, &CLSID_SubtitlePage,
                                            &CLSID_OsdPage, &CLSID_AboutPage};
  constexpr uint32_t count = sizeof kPages / sizeof kPages[0];
  pages->cElems = 0;
  pages->pElems = static_cast<GUID*>(CoTaskMemAlloc(count * sizeof(GUID)));
  if (!pages->pElems) return E_OUTOFMEMORY;
  for (uint32_t i = 0; i < count; ++i) pages->pElems[i] = *kPages[i];
  pages->cElems = count;
  return S_OK;
}

HRESULT VideoFilter::CompleteConnect(PIN_DIRECTION direction, IPin* pin) {
  {
    std::lock_guard lock(frameLock_);
    borderRefresh_ = kBorderRefreshFrames;
    lastSubtitleState_ = lastClockState_ = -1;
  }
  if (direction == PINDIR_INPUT) {
    DynString source = FindSourceFileName(pin);  // walks other filters: outside the lock
    std::lock_guard lock(frameLock_);
    sourceFileName_ = std::move(source);
    AutoLoadSubtitles();
  }
  const HRESULT hr = TransformFilter::CompleteConnect(direction, pin);
  if (FAILED(hr) || direction != PINDIR_INPUT) return hr;
  if (!IsNeeded()) return E_FAIL;
  // The graph answers the duration under its own lock, so it is asked outside ours.
  const int32_t mediaDurationMs = MediaDurationMs();
  std::lock_guard lock(frameLock_);
  ReadConnectionTimes(mediaDurationMs);
  UpdateClockRate();
  return hr;
}

void VideoFilter::AutoLoadSubtitles() {
  std::lock_guard lock(frameLock_);
  OwningPtrArray<DynString> candidates;
  FindSubtitleFiles(&candidates);
  track_.preferredLanguage = settings_.Sub.SubLang.c_str();
  for (DynString* candidate : candidates) {
    if (LoadSubtitleFile(track_, candidate->c_str()) == 0) break;
  }
}

bool VideoFilter::IsNeeded() {
  std::lock_guard lock(frameLock_);
  const Settings& s = settings_;
  if (s.LoadMode == kLoadAlways || s.LoadMode == kLoadForce) return true;
  if (s.LoadMode != kLoadIfNeeded) return false;
  const int32_t width = ToVideoFormat(InputPin()->CurrentMediaType()).biWidth;
  return s.bOverscan || s.bFill || s.bFillH || s.Flip != 0 || s.Overlay || s.YShift ||
         s.FPSConv != 0 || !track_.entries.IsEmpty() || s.OSD.OSDWorldTime ||
         s.OSD.OSDVideoTime || width % 32 != 0;
}

// Outside the frame lock: the graph's duration is asked under the graph's own lock.
int32_t VideoFilter::MediaDurationMs() {
  const ComPtr<IMediaPosition> position = QueryAs<IMediaPosition>(Graph());
  double seconds = 0;
  if (!position || FAILED(position->get_Duration(&seconds))) return 0;
  return SaturatingCast<int32_t>(seconds * 1000 + 0.5);  // any filter upstream may answer
}

void VideoFilter::ReadConnectionTimes(int32_t mediaDurationMs) {
  const VideoFormat format = ToVideoFormat(InputPin()->CurrentMediaType());
  frameDuration_ = static_cast<int32_t>(format.AvgTimePerFrame & 0xFFFFFFFF);
  detectedFrameDuration_ = frameDuration_;
  if (frameDuration_ > 0) {
    track_.ConvertFramesToMs(10000000.0f / static_cast<float>(frameDuration_));
  }
  durationMs_ = mediaDurationMs;
}

bool VideoFilter::UpdateClockRate() {
  std::lock_guard lock(frameLock_);
  if (!rateClock_) return false;
  rateClock_->SetRate(settings_.SourceFrameDuration(frameDuration_));
  return rateClock_->Rate() != 0;
}

int32_t VideoFilter::ClockRate() {
  std::lock_guard lock(frameLock_);
  return rateClock_ ? rateClock_->Rate() : 0;
}

void VideoFilter::InsertBeforeMixer() {
  std::lock_guard lock(frameLock_);
  if (settings_.LoadMode != kLoadForce || InputPin()->IsConnected() ||
      OutputPin()->IsConnected()) {
    return;
  }
  const ComPtr<IGraphBuilder> builder = QueryAs<IGraphBuilder>(Graph());
  ComPtr<IBaseFilter> mixer;
  if (!builder || FAILED(builder->FindFilterByName(u"Overlay Mixer", mixer.ReleaseAndGetAddressOf())))
    return;
  const std::vector<ComPtr<IPin>> mixerPins = PinsOf(mixer.Get());
  if (mixerPins.empty()) return;
  IPin* mixerPin = mixerPins.front().Get();
  const ComPtr<IPin> upstream = ConnectedPin(mixerPin);
  if (!upstream) return;
  // Results are not examined: a refused splice leaves the path as the graph left it.
  builder->Disconnect(upstream.Get());
  builder->Disconnect(mixerPin);
  builder->ConnectDirect(upstream.Get(), InputPin(), nullptr);
  builder->ConnectDirect(OutputPin(), mixerPin, nullptr);
}

HRESULT VideoFilter::SetSyncSource(IReferenceClock* clock) {
  if (clock != nullptr) {
    std::lock_guard lock(frameLock_);
    InsertBeforeMixer();
    UpdateClockRate();
    InsertAudioFilter(Graph(), InputPin(), settings_.SourceFrameDuration(frameDuration_));
  }
  return TransformFilter::SetSyncSource(clock);
}

}  // namespace korvalin
