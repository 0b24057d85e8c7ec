#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <vector>

#include "host/base_filter.h"
#include "host/input_pin.h"
#include "video/video_format.h"

namespace korvalin {

inline constexpr host::CLSID CLSID_FrameSink =
    host::MakeGuid("6B6F7276-0002-4C4E-8000-53494E4B0000");

// One received frame, top row first, rows packed.
struct SinkFrame {
  PixelFormat format = PixelFormat::YUY2;
  int32_t width = 0;
  int32_t height = 0;
  std::span<const uint8_t> pixels;
  bool hasTime = false;
  host::REFERENCE_TIME start = 0;
  host::REFERENCE_TIME stop = 0;
};

// A renderer that takes one pixel format (YUY2, RGB32 or RGB565) and hands each frame to a
// consumer. A consumer answering false stops the stream with an error.
class FrameSink : public host::BaseFilter {
 public:
  using Consumer = std::function<bool(const SinkFrame&)>;

  FrameSink(PixelFormat format, Consumer consumer);
  int GetPinCount() override { return 1; }
  host::BasePin* GetPin(int index) override;
  int64_t FramesReceived();

 private:
  class Pin : public host::RenderedInputPin {
   public:
    explicit Pin(FrameSink* sink);
    host::HRESULT CheckMediaType(const host::AM_MEDIA_TYPE& type) override;
    host::HRESULT Receive(host::IMediaSample* sample) override;

   private:
    FrameSink* sink_;
  };

  host::HRESULT Consume(host::IMediaSample* sample, const host::AM_MEDIA_TYPE& type);

  PixelFormat format_;
  Consumer consumer_;
  Pin pin_;
  std::mutex countLock_;
  int64_t frames_ = 0;
  std::vector<uint8_t> topDown_;
};

}  // namespace korvalin
