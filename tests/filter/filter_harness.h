#pragma once
// One VideoFilter between a source the test pushes from and a sink that records each frame
// and then scribbles over its buffer, so a border the filter leaves alone shows up.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "filter/format_change_allocator.h"
#include "filter/video_filter.h"
#include "filter/video_format_conversion.h"
#include "filter/yuy2_media_type.h"
#include "host/filter_graph.h"
#include "host/input_pin.h"
#include "host/media_guids.h"
#include "host/output_pin.h"

namespace korvalin::testing {

using namespace host;

inline constexpr REFERENCE_TIME kFrameTicks = 400000;  // 40 ms

inline Settings Plain(bool overlay = false) {
  Settings settings{Settings::DefaultsOnly{}};
  settings.bFill2 = 0;
  settings.Overlay = overlay ? 1 : 0;
  return settings;
}

inline AM_MEDIA_TYPE Yuy2Type(int32_t width, int32_t height,
                              REFERENCE_TIME frameTicks = kFrameTicks) {
  return Yuy2VideoType(width, height, frameTicks);
}

inline AM_MEDIA_TYPE Yuy2Type2(int32_t width, int32_t height, uint32_t aspectX, uint32_t aspectY) {
  AM_MEDIA_TYPE type = Yuy2Type(width, height);
  ConvertVideoInfoToVideoInfo2(&type);
  VIDEOINFOHEADER2 vih;
  ReadFormatBlock(type, &vih);
  vih.dwPictAspectRatioX = aspectX;
  vih.dwPictAspectRatioY = aspectY;
  SetFormatBlock(&type, vih);
  return type;
}

// What a pushed sample carries besides its uniform grey pixels.
struct PushOptions {
  bool timed = true;
  REFERENCE_TIME start = 0, stop = kFrameTicks;
  bool preroll = false;
  bool keepAttachedType = false;  // leaves the type the filter's allocator attached
  const AM_MEDIA_TYPE* attachType = nullptr;
};

inline PushOptions Between(REFERENCE_TIME start, REFERENCE_TIME stop) {
  PushOptions options;
  options.start = start;
  options.stop = stop;
  return options;
}
inline PushOptions Frame(int index) {
  return Between(index * kFrameTicks, (index + 1) * kFrameTicks);
}
inline PushOptions FrameAtMs(int64_t ms) { return Between(ms * 10000, ms * 10000 + kFrameTicks); }

class PushPin : public BaseOutputPin {
 public:
  PushPin(BaseFilter* filter, AM_MEDIA_TYPE type) : BaseOutputPin(filter, u"Out"), type_(type) {}
  HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
    return MediaTypesEqual(type, type_) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override {
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    *type = type_;
    return S_OK;
  }
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
    request->cBuffers = 1;
    request->cbBuffer = 1 << 20;
    ALLOCATOR_PROPERTIES actual;
    return allocator->SetProperties(request, &actual);
  }
  HRESULT Push(const PushOptions& options) {
    ComPtr<IMediaSample> sample;
    HRESULT hr = GetDeliveryBuffer(sample.ReleaseAndGetAddressOf(), nullptr, nullptr, 0);
    if (FAILED(hr)) return hr;
    if (!options.keepAttachedType) sample->SetMediaType(options.attachType);
    uint8_t* data = nullptr;
    sample->GetPointer(&data);
    for (int32_t i = 0; i + 1 < sample->GetSize(); i += 2) data[i] = data[i + 1] = 0x80;
    sample->SetActualDataLength(sample->GetSize());
    if (options.timed) sample->SetTime(&options.start, &options.stop);
    sample->SetPreroll(options.preroll);
    return Deliver(sample.Get());
  }
  AM_MEDIA_TYPE type_;
};

class PushSource : public BaseFilter {
 public:
  explicit PushSource(AM_MEDIA_TYPE type)
      : BaseFilter(MakeGuid("22222222-0000-4000-8000-000000000001")), pin_(this, type) {}
  int GetPinCount() override { return 1; }
  BasePin* GetPin(int index) override { return index == 0 ? &pin_ : nullptr; }
  PushPin* Pin() { return &pin_; }

 private:
  PushPin pin_;
};

struct RecordedFrame {
  std::vector<uint8_t> bytes;
  bool timed = false;
  REFERENCE_TIME start = 0, stop = 0;
};

class RecordingSink : public BaseFilter {
 public:
  explicit RecordingSink(GUID subtype)
      : BaseFilter(MakeGuid("22222222-0000-4000-8000-000000000002")), pin_(this, subtype) {}
  int GetPinCount() override { return 1; }
  BasePin* GetPin(int index) override { return index == 0 ? &pin_ : nullptr; }

  class Pin : public RenderedInputPin {
   public:
    Pin(RecordingSink* sink, GUID subtype)
        : RenderedInputPin(sink, u"In"), sink_(sink), subtype_(subtype) {}
    HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
      return type.subtype == subtype_ ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }
    // Our own allocator, so tests can attach an output type to a buffer.
    HRESULT GetAllocator(IMemAllocator** allocator) override {
      if (!own_) own_ = MakeCom<FormatChangeAllocator>();
      *allocator = own_.Get();
      own_->AddRef();
      return S_OK;
    }
    HRESULT Receive(IMediaSample* sample) override {
      const HRESULT hr = RenderedInputPin::Receive(sample);
      if (hr != S_OK) return hr;
      RecordedFrame frame;
      uint8_t* data = nullptr;
      sample->GetPointer(&data);
      frame.bytes.assign(data, data + sample->GetActualDataLength());
      frame.timed = sample->GetTime(&frame.start, &frame.stop) == S_OK;
      sink_->frames.push_back(std::move(frame));
      std::memset(data, 0x55, static_cast<std::size_t>(sample->GetSize()));
      return S_OK;
    }
    ComPtr<FormatChangeAllocator> own_;

   private:
    RecordingSink* sink_;
    GUID subtype_;
  };

  Pin* InPin() { return &pin_; }
  std::vector<RecordedFrame> frames;

 private:
  Pin pin_;
};

// Source -> VideoFilter -> sink in a graph; Start() connects and pauses it.
class FilterPipeline {
 public:
  FilterPipeline(const Settings& settings, const AM_MEDIA_TYPE& inputType,
                 GUID outputSubtype = MEDIASUBTYPE_YUY2)
      : filter(MakeCom<VideoFilter>(settings, [] { return TimeOfDay{12, 34}; })),
        source(MakeCom<PushSource>(inputType)),
        sink(MakeCom<RecordingSink>(outputSubtype)) {
    graph->AddFilter(source.Get(), u"Source");
    graph->AddFilter(filter.Get(), u"Korvalin");
    graph->AddFilter(sink.Get(), u"Sink");
  }
  HRESULT Connect() {
    HRESULT hr = graph->ConnectDirect(source->Pin(), filter->GetPin(0), nullptr);
    return FAILED(hr) ? hr : graph->ConnectDirect(filter->GetPin(1), sink->InPin(), nullptr);
  }
  HRESULT Start() {
    const HRESULT hr = Connect();
    return FAILED(hr) ? hr : graph->Pause();
  }
  HRESULT Push(const PushOptions& options) { return source->Pin()->Push(options); }
  const RecordedFrame& Last() const { return sink->frames.back(); }
  ~FilterPipeline() { graph->Stop(); }

  ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
  ComPtr<VideoFilter> filter;
  ComPtr<PushSource> source;
  ComPtr<RecordingSink> sink;
};

}  // namespace korvalin::testing
