#include "filter/frame_sink.h"

#include <cstdlib>
#include <cstring>

#include "filter/video_format_conversion.h"
#include "host/media_guids.h"
#include "video/frame_row.h"
#include "video/pixel_size.h"

namespace korvalin {

using namespace host;

FrameSink::Pin::Pin(FrameSink* sink) : RenderedInputPin(sink, u"In"), sink_(sink) {}

HRESULT FrameSink::Pin::CheckMediaType(const AM_MEDIA_TYPE& type) {
  PixelFormat format;
  if (!OutputPixelFormat(type.subtype, &format) || format != sink_->format_)
    return VFW_E_TYPE_NOT_ACCEPTED;
  if (type.formattype != FORMAT_VideoInfo && type.formattype != FORMAT_VideoInfo2)
    return VFW_E_TYPE_NOT_ACCEPTED;
  const VideoFormat video = ToVideoFormat(type);
  const bool sane =
      video.biWidth > 0 && video.biHeight != 0 && video.biBitCount == 8 * BytesPerPixel(format);
  return sane ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT FrameSink::Pin::Receive(IMediaSample* sample) {
  const HRESULT hr = RenderedInputPin::Receive(sample);
  if (hr != S_OK) return hr;
  return sink_->Consume(sample, CurrentMediaType());
}

FrameSink::FrameSink(PixelFormat format, Consumer consumer)
    : BaseFilter(CLSID_FrameSink), format_(format), consumer_(std::move(consumer)), pin_(this) {}

BasePin* FrameSink::GetPin(int index) {
  return index == 0 ? &pin_ : nullptr;
}

int64_t FrameSink::FramesReceived() {
  std::lock_guard lock(countLock_);
  return frames_;
}

HRESULT FrameSink::Consume(IMediaSample* sample, const AM_MEDIA_TYPE& type) {
  const VideoFormat format = ToVideoFormat(type);
  const int32_t rows = std::abs(format.biHeight);
  const std::size_t stride = std::size_t(format.biWidth) * std::size_t(BytesPerPixel(format_));
  uint8_t* data = nullptr;
  if (FAILED(sample->GetPointer(&data)) ||
      static_cast<std::size_t>(sample->GetSize()) < stride * std::size_t(rows)) {
    return E_FAIL;
  }
  topDown_.resize(stride * std::size_t(rows));
  for (int32_t row = 0; row < rows; ++row)
    std::memcpy(topDown_.data() + row * stride, FrameRow(data, row, format, false), stride);

  SinkFrame frame{format_, format.biWidth, rows, topDown_};
  frame.hasTime = sample->GetTime(&frame.start, &frame.stop) == S_OK;
  if (!consumer_(frame)) return E_FAIL;
  std::lock_guard lock(countLock_);
  ++frames_;
  return S_OK;
}

}  // namespace korvalin
