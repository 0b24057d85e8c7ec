#include "filter/video_filter.h"

#include <cstdlib>
#include <memory>

#include "filter/media_type_checks.h"
#include "filter/output_media_types.h"
#include "filter/picture_geometry.h"
#include "filter/video_format_conversion.h"
#include "host/media_guids.h"
#include "host/pin_helpers.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {

using namespace host;

namespace {

constexpr int32_t kSubtitleSurfaceWidth = 720;
constexpr int32_t kSubtitleSurfaceHeight = 576;

}  // namespace

VideoFilter::VideoFilter() : VideoFilter(Settings()) {}

VideoFilter::VideoFilter(const Settings& stored, ClockOverlay::TimeSource timeSource)
    : TransformFilter(CLSID_VideoFilter),
      settings(stored),
      track(std::make_unique<TextRenderer>(kSubtitleSurfaceWidth, kSubtitleSurfaceHeight)),
      clock(timeSource ? std::move(timeSource) : ClockOverlay::TimeSource(LocalTimeOfDay)) {
  ApplyStyles();
}

VideoFilter::~VideoFilter() = default;

TextRenderer& VideoFilter::SubtitleImage() {
  return *static_cast<TextRenderer*>(track.renderer());
}

BasePin* VideoFilter::GetPin(int index) {
  std::lock_guard lock(filterLock_);
  if (!input_) input_ = std::make_unique<VideoInputPin>(this, u"XForm In");
  return TransformFilter::GetPin(index);
}

VideoInputPin* VideoFilter::VideoInput() {
  return static_cast<VideoInputPin*>(InputPin());
}

void VideoFilter::ApplyStyles() {
  std::lock_guard lock(frameLock);
  track.currentIndex = -1;
  ApplyFontStyle(SubtitleImage(), settings.Sub.style, settings.TV);
  ApplyFontStyle(clock.renderer, settings.OSD.style, settings.TV);
  clock.SetModes(settings.OSD.OSDVideoTime, settings.OSD.OSDWorldTime);
}

int VideoFilter::LoadSubtitles(const char* path) {
  std::lock_guard lock(frameLock);
  borderRefresh = kBorderRefreshFrames;
  const int result = LoadSubtitleFile(track, path);
  if (result == 0 && detectedFrameDuration > 0) {
    track.ConvertFramesToMs(10000000.0f / static_cast<float>(detectedFrameDuration));
  }
  return result == 0 ? 0 : -1;
}

HRESULT VideoFilter::CheckInputType(const AM_MEDIA_TYPE& type) {
  return korvalin::CheckInputType(type, settings.Overlay != 0);
}

HRESULT VideoFilter::CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out) {
  return korvalin::CheckTransform(in, out, settings.Overlay != 0);
}

HRESULT VideoFilter::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  if (!InputPin()->IsConnected()) return E_UNEXPECTED;
  if (allocator == nullptr || request == nullptr) return E_POINTER;
  request->cBuffers = 1;
  request->cbBuffer = static_cast<int32_t>(OutputPin()->CurrentMediaType().lSampleSize);
  ALLOCATOR_PROPERTIES actual;
  const HRESULT hr = allocator->SetProperties(request, &actual);
  if (FAILED(hr)) return hr;
  if (actual.cBuffers < 1 || actual.cbBuffer < request->cbBuffer) return E_FAIL;
  return S_OK;
}

bool VideoFilter::OverlaysShown() const {
  return !track.entries.IsEmpty() || clock.videoTimeMode != 0 || clock.worldTime != 0;
}

void VideoFilter::UpdateSourceAspect() {
  sourceAspect = 0;
  if (!settings.Overlay || settings.AspectComp != 0) return;
  auto aspectOf = [](const AM_MEDIA_TYPE& type) {
    const VideoFormat f = ToVideoFormat(type);
    return SourceAspectFromFormat(f.biWidth, f.biHeight, f.dwPictAspectRatioX,
                                  f.dwPictAspectRatioY);
  };
  const AM_MEDIA_TYPE& connection = InputPin()->CurrentMediaType();
  if (connection.formattype == FORMAT_VideoInfo2) {
    sourceAspect = aspectOf(connection);
    return;
  }
  ComPtr<IEnumMediaTypes> types;
  IPin* upstream = InputPin()->GetConnected();
  if (upstream == nullptr || FAILED(upstream->EnumMediaTypes(types.ReleaseAndGetAddressOf())) ||
      !types) {
    return;
  }
  MediaTypePtr type;
  uint32_t fetched = 0;
  while (sourceAspect == 0 && types->Next(1, &type, &fetched) == S_OK && fetched == 1) {
    if (type && type->formattype == FORMAT_VideoInfo2 && type->subtype == MEDIASUBTYPE_YUY2)
      sourceAspect = aspectOf(*type);
  }
}

HRESULT VideoFilter::GetMediaType(int position, AM_MEDIA_TYPE* type) {
  if (!InputPin()->IsConnected()) return E_UNEXPECTED;
  if (position < 0) return E_INVALIDARG;
  // No frame lock: the upstream pin is asked for its types, and host locks are never taken
  // inside it. The fields read here change only while the filter is stopped.
  UpdateSourceAspect();
  const PictureGeometry geometry(settings, sourceAspect, OverlaysShown());
  return OfferOutputType(position, InputPin()->CurrentMediaType(), geometry, settings.Overlay != 0,
                         type);
}

// Outside the frame lock: the graph's duration is asked under the graph's own lock.
int32_t VideoFilter::MediaDurationMs() {
  const ComPtr<IMediaPosition> position = QueryAs<IMediaPosition>(Graph());
  double seconds = 0;
  if (!position || FAILED(position->get_Duration(&seconds))) return 0;
  return static_cast<int32_t>(seconds * 1000 + 0.5);
}

void VideoFilter::ReadConnectionTimes(int32_t mediaDurationMs) {
  const VideoFormat format = ToVideoFormat(InputPin()->CurrentMediaType());
  frameDuration = static_cast<int32_t>(format.AvgTimePerFrame & 0xFFFFFFFF);
  detectedFrameDuration = frameDuration;
  if (frameDuration > 0) track.ConvertFramesToMs(10000000.0f / static_cast<float>(frameDuration));
  durationMs = mediaDurationMs;
}

HRESULT VideoFilter::CompleteConnect(PIN_DIRECTION direction, IPin* pin) {
  {
    std::lock_guard lock(frameLock);
    borderRefresh = kBorderRefreshFrames;
    lastSubtitleState = lastClockState = -1;
  }
  const HRESULT hr = TransformFilter::CompleteConnect(direction, pin);
  if (FAILED(hr) || direction != PINDIR_INPUT) return hr;
  const int32_t mediaDurationMs = MediaDurationMs();
  std::lock_guard lock(frameLock);
  ReadConnectionTimes(mediaDurationMs);
  return hr;
}

HRESULT VideoFilter::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  {
    std::lock_guard lock(frameLock);
    segmentStart = start;
    borderRefresh = kBorderRefreshFrames;
  }
  return TransformFilter::NewSegment(start, stop, rate);
}

bool OverlayChangeNeedsRefresh(int32_t newState, int32_t lastState) {
  return (newState <= 0 && lastState >= 0) || (newState >= 0 && lastState < 0);
}

}  // namespace korvalin
