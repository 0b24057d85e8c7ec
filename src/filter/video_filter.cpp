#include "filter/video_filter.h"

#include <cstdlib>
#include <memory>

#include "filter/media_type_checks.h"
#include "filter/output_media_types.h"
#include "filter/picture_geometry.h"
#include "filter/video_format_conversion.h"
#include "host/mem_allocator.h"
#include "host/media_guids.h"
#include "host/pin_helpers.h"

namespace korvalin {

using namespace host;

namespace {

// The subtitle surface up to a drawing width of 720; wider pictures get it grown in
// proportion, so their subtitles are never cut.
constexpr int32_t kSubtitleSurfaceWidth = 720;
constexpr int32_t kSubtitleSurfaceHeight = 576;

}  // namespace

VideoFilter::VideoFilter() : VideoFilter(Settings()) {}

VideoFilter::VideoFilter(Rgb32Padding padding) : VideoFilter(Settings(), {}, padding) {}

VideoFilter::VideoFilter(const Settings& stored, ClockOverlay::TimeSource timeSource,
                         Rgb32Padding padding)
    : TransformFilter(CLSID_VideoFilter),
      settings_(stored),
      track_(std::make_unique<TextRenderer>(kSubtitleSurfaceWidth, kSubtitleSurfaceHeight)),
      clock_(timeSource ? std::move(timeSource) : ClockOverlay::TimeSource(LocalTimeOfDay)),
      colorTables_(static_cast<uint8_t>(padding)) {
  if (settings_.FPSConv != 0) rateClock_ = MakeCom<RateClock>();
  ApplyStyles();
}

VideoFilter::~VideoFilter() { StopTray(); }

HRESULT VideoFilter::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (!out) return E_POINTER;
  if (iid == IID_IFilterSettings) {
    if (Graph() == nullptr) {
      *out = nullptr;
      return E_NOINTERFACE;
    }
    return GetInterface(static_cast<IFilterSettings*>(this), out);
  }
  if (iid == IID_ISpecifyPropertyPages) {
    return GetInterface(static_cast<ISpecifyPropertyPages*>(this), out);
  }
  if (iid == IID_IReferenceClock && rateClock_) return rateClock_->QueryInterface(iid, out);
  return TransformFilter::NonDelegatingQueryInterface(iid, out);
}

TextRenderer& VideoFilter::SubtitleImage() {
  return *static_cast<TextRenderer*>(track_.renderer());
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
  std::lock_guard lock(frameLock_);
  track_.currentIndex = -1;
  ApplyFontStyle(SubtitleImage(), settings_.Sub.style, settings_.TV);
  ApplyFontStyle(clock_.renderer, settings_.OSD.style, settings_.TV);
  clock_.SetModes(settings_.OSD.OSDVideoTime, settings_.OSD.OSDWorldTime);
}

FrameStateView VideoFilter::FrameState() {
  std::lock_guard lock(frameLock_);
  return {borderRefresh_,      lastSubtitleState_,       lastClockState_,
          frameDuration_,      detectedFrameDuration_,   durationMs_,
          sourceFileName_.c_str(), track_.entries.Count()};
}

HRESULT VideoFilter::CheckInputType(const AM_MEDIA_TYPE& type) {
  return korvalin::CheckInputType(type, settings_.Overlay != 0);
}

HRESULT VideoFilter::CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out) {
  return korvalin::CheckTransform(in, out, settings_.Overlay != 0);
}

HRESULT VideoFilter::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  if (!InputPin()->IsConnected()) return E_UNEXPECTED;
  if (allocator == nullptr || request == nullptr) return E_POINTER;
  request->cBuffers = 1;
  request->cbBuffer = static_cast<int32_t>(OutputPin()->CurrentMediaType().lSampleSize);
  return SetBuffersAtLeast(allocator, *request);
}

bool VideoFilter::OverlaysShown() const {
  return !track_.entries.IsEmpty() || clock_.videoTimeMode != 0 || clock_.worldTime != 0;
}

void VideoFilter::UpdateSourceAspect() {
  sourceAspect_ = 0;
  if (!settings_.Overlay || settings_.AspectComp != 0) return;
  auto aspectOf = [](const AM_MEDIA_TYPE& type) {
    const VideoFormat f = ToVideoFormat(type);
    return SourceAspectFromFormat(f.biWidth, f.biHeight, f.dwPictAspectRatioX,
                                  f.dwPictAspectRatioY);
  };
  const AM_MEDIA_TYPE& connection = InputPin()->CurrentMediaType();
  if (connection.formattype == FORMAT_VideoInfo2) {
    sourceAspect_ = aspectOf(connection);
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
  while (sourceAspect_ == 0 && types->Next(1, &type, &fetched) == S_OK && fetched == 1) {
    if (type && type->formattype == FORMAT_VideoInfo2 && type->subtype == MEDIASUBTYPE_YUY2)
      sourceAspect_ = aspectOf(*type);
  }
}

HRESULT VideoFilter::GetMediaType(int position, AM_MEDIA_TYPE* type) {
  if (!InputPin()->IsConnected()) return E_UNEXPECTED;
  if (position < 0) return E_INVALIDARG;
  // No frame lock: the upstream pin is asked for its types, and host locks are never taken
  // inside it. The fields read here change only while the filter is stopped.
  UpdateSourceAspect();
  const PictureGeometry geometry(settings_, sourceAspect_, OverlaysShown());
  return OfferOutputType(position, InputPin()->CurrentMediaType(), geometry, settings_.Overlay != 0,
                         type);
}

HRESULT VideoFilter::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  {
    std::lock_guard lock(frameLock_);
    segmentStart_ = start;
    borderRefresh_ = kBorderRefreshFrames;
  }
  return TransformFilter::NewSegment(start, stop, rate);
}

bool OverlayChangeNeedsRefresh(int32_t newState, int32_t lastState) {
  return (newState <= 0 && lastState >= 0) || (newState >= 0 && lastState < 0);
}

}  // namespace korvalin
