#include "gst/filter_session.h"

#include <numeric>

#include "filter/video_format_conversion.h"
#include "host/media_guids.h"
#include "host/pin_helpers.h"

namespace korvalin::gst {

using namespace host;

namespace {

// The pixel shape of the framed picture. Rows and columns are copied one to one, so the
// film's own pixel shape holds, unless the filter declares a picture aspect of its own
// (VIDEOINFOHEADER2, "Enable extended overlay").
void PixelAspectOf(const AM_MEDIA_TYPE& type, const FilmFormat& film, OutputShape* shape) {
  shape->pixelAspectNumerator = film.pixelAspectNumerator;
  shape->pixelAspectDenominator = film.pixelAspectDenominator;
  const VideoFormat f = ToVideoFormat(type);
  if (type.formattype != FORMAT_VideoInfo2 || f.dwPictAspectRatioX == 0 ||
      f.dwPictAspectRatioY == 0 || f.biWidth <= 0 || f.biHeight == 0) {
    return;
  }
  int64_t n = int64_t{f.dwPictAspectRatioX} * std::abs(f.biHeight);
  int64_t d = int64_t{f.dwPictAspectRatioY} * f.biWidth;
  const int64_t divisor = std::gcd(n, d);
  n /= divisor, d /= divisor;
  while (n > INT32_MAX || d > INT32_MAX) n >>= 1, d >>= 1;
  shape->pixelAspectNumerator = static_cast<int32_t>(std::max<int64_t>(n, 1));
  shape->pixelAspectDenominator = static_cast<int32_t>(std::max<int64_t>(d, 1));
}

}  // namespace

FilterSession::FilterSession(bool probe)
    : graph_(MakeCom<FilterGraph>()),
      source_(MakeCom<FilmSource>()),
      // GStreamer's converters take BGRx's fourth byte for alpha: the picture must be opaque.
      filter_(MakeCom<VideoFilter>(Rgb32Padding::kOpaque)) {
  if (probe) filter_->StayOffTheDesktop();
  graph_->AddFilter(source_.Get(), u"Film");
  // Load mode "Never" refuses to join: the session then never connects.
  inGraph_ = SUCCEEDED(graph_->AddFilter(filter_.Get(), u"Korvalin"));
}

FilterSession::~FilterSession() {
  DisconnectAll();
  if (sink_) graph_->RemoveFilter(sink_.Get());
  if (inGraph_) graph_->RemoveFilter(filter_.Get());
  graph_->RemoveFilter(source_.Get());
}

void FilterSession::DisconnectAll() {
  for (IBaseFilter* f : {static_cast<IBaseFilter*>(source_.Get()),
                         static_cast<IBaseFilter*>(filter_.Get()),
                         static_cast<IBaseFilter*>(sink_.Get())}) {
    if (f == nullptr) continue;
    for (const ComPtr<IPin>& pin : PinsOf(f)) graph_->Disconnect(pin.Get());
  }
  connected_ = outputSelected_ = false;
}

bool FilterSession::Connect(const FilmFormat& film, const std::string& fileName,
                            double durationSeconds) {
  DisconnectAll();
  if (!inGraph_ || film.width <= 0 || film.height <= 0) return false;
  film_ = film;
  source_->SetFilm(film, fileName, durationSeconds);
  connected_ = SUCCEEDED(
      graph_->ConnectDirect(source_->GetPin(0), filter_->GetPin(0), nullptr));
  if (!connected_) graph_->Disconnect(source_->GetPin(0));
  return connected_;
}

OutputShape FilterSession::Output() {
  OutputShape shape;
  AM_MEDIA_TYPE type;
  if (!connected_ || filter_->GetMediaType(0, &type) != S_OK) return shape;
  const VideoFormat f = ToVideoFormat(type);
  shape.width = f.biWidth;
  shape.height = std::abs(f.biHeight);
  PixelAspectOf(type, film_, &shape);
  return shape;
}

bool FilterSession::SelectOutput(PixelFormat format) {
  if (!connected_) return false;
  if (outputSelected_ && format == outputFormat_) return true;
  if (sink_) {
    graph_->Disconnect(filter_->GetPin(1));
    graph_->Disconnect(sink_->GetPin(0));
    graph_->RemoveFilter(sink_.Get());
  }
  sink_ = MakeCom<FrameSink>(format, [](const SinkFrame&) { return true; });
  graph_->AddFilter(sink_.Get(), u"Renderer");
  outputSelected_ =
      SUCCEEDED(graph_->ConnectDirect(filter_->GetPin(1), sink_->GetPin(0), nullptr));
  outputFormat_ = format;
  announceTopDown_ = outputSelected_;
  return outputSelected_;
}

FrameResult FilterSession::Transform(const FrameIn& in, uint8_t* out, std::size_t outSize) {
  if (!outputSelected_) return FrameResult::kUntouched;
  inSample_.ResetProperties();
  inSample_.SetBuffer(const_cast<uint8_t*>(in.pixels), static_cast<int32_t>(in.size));
  inSample_.SetActualDataLength(static_cast<int32_t>(in.size));
  if (in.timed) inSample_.SetTime(&in.start, &in.stop);
  inSample_.SetSyncPoint(in.syncPoint);
  inSample_.SetDiscontinuity(in.discontinuity);

  outSample_.ResetProperties();
  outSample_.SetBuffer(out, static_cast<int32_t>(outSize));
  if (announceTopDown_) {
    // As a renderer that wants rows top-down says so: a type on the first buffer.
    AM_MEDIA_TYPE topDown = filter_->OutputPin()->CurrentMediaType();
    MakeTopDown(&topDown);
    outSample_.SetMediaType(&topDown);
    announceTopDown_ = false;
  }
  const HRESULT hr = filter_->Transform(&inSample_, &outSample_);
  if (hr != S_OK) return FrameResult::kDropped;
  return outSample_.GetActualDataLength() > 0 ? FrameResult::kWritten : FrameResult::kUntouched;
}

void FilterSession::NewSegment(int64_t start) {
  if (connected_) filter_->NewSegment(start, INT64_MAX, 1.0);
}

int32_t FilterSession::ClockRate() {
  return connected_ ? filter_->ClockRate() : 0;
}

IFilterSettings* FilterSession::Settings() {
  return inGraph_ ? static_cast<IFilterSettings*>(filter_.Get()) : nullptr;
}

}  // namespace korvalin::gst
