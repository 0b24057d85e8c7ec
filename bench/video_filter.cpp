// The filter's whole per-frame path (Transform) with a two-line subtitle and the clock on,
// at PAL and full-HD sizes, into each output format, with and without economic mode.
// Items are frames, so items_per_second is frames per second.
#include "filter/video_filter.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "filter/yuy2_media_type.h"
#include "host/filter_graph.h"
#include "host/input_pin.h"
#include "host/media_guids.h"
#include "host/output_pin.h"

namespace korvalin {
namespace {

using namespace host;

constexpr REFERENCE_TIME kFrameTicks = 400000;

class BenchSourcePin : public BaseOutputPin {
 public:
  BenchSourcePin(BaseFilter* filter, AM_MEDIA_TYPE type)
      : BaseOutputPin(filter, u"Out"), type_(std::move(type)) {}
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
    request->cbBuffer = static_cast<int32_t>(type_.lSampleSize);
    ALLOCATOR_PROPERTIES actual;
    return allocator->SetProperties(request, &actual);
  }

 private:
  AM_MEDIA_TYPE type_;
};

class BenchSource : public BaseFilter {
 public:
  explicit BenchSource(AM_MEDIA_TYPE type)
      : BaseFilter(MakeGuid("33333333-0000-4000-8000-000000000001")), pin_(this, type) {}
  int GetPinCount() override { return 1; }
  BasePin* GetPin(int index) override { return index == 0 ? &pin_ : nullptr; }
  BenchSourcePin* Pin() { return &pin_; }

 private:
  BenchSourcePin pin_;
};

class NullSink : public BaseFilter {
 public:
  explicit NullSink(GUID subtype)
      : BaseFilter(MakeGuid("33333333-0000-4000-8000-000000000002")), pin_(this, subtype) {}
  int GetPinCount() override { return 1; }
  BasePin* GetPin(int index) override { return index == 0 ? &pin_ : nullptr; }

 private:
  class Pin : public RenderedInputPin {
   public:
    Pin(BaseFilter* filter, GUID subtype) : RenderedInputPin(filter, u"In"), subtype_(subtype) {}
    HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
      return type.subtype == subtype_ ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }

   private:
    GUID subtype_;
  };
  Pin pin_;
};

constexpr const char* kTwoLines =
    "1\n00:00:00,000 --> 01:00:00,000\nA subtitle of two lines\nto draw over every frame\n\n";

void Transform(benchmark::State& state, int32_t width, int32_t height, GUID subtype,
               bool economic) {
  Settings settings{Settings::DefaultsOnly{}};
  settings.bOverscan = 1;
  settings.Economic = economic ? 1 : 0;
  settings.OSD.OSDVideoTime = 1;
  settings.OSD.OSDWorldTime = 1;
  const auto subs = std::filesystem::temp_directory_path() /
                    ("korvalin-bench-" + std::to_string(getpid()) + ".srt");
  std::ofstream(subs) << kTwoLines;

  const ComPtr<FilterGraph> graph = MakeCom<FilterGraph>();
  const ComPtr<BenchSource> source =
      MakeCom<BenchSource>(Yuy2VideoType(width, height, kFrameTicks));
  const ComPtr<VideoFilter> filter = MakeCom<VideoFilter>(settings);
  const ComPtr<NullSink> sink = MakeCom<NullSink>(subtype);
  graph->AddFilter(source.Get(), u"Source");
  graph->AddFilter(filter.Get(), u"Korvalin");
  graph->AddFilter(sink.Get(), u"Sink");
  const bool ready = filter->SelectSubtitle(subs.c_str(), nullptr) == S_OK &&
                     graph->ConnectDirect(source->Pin(), filter->GetPin(0), nullptr) == S_OK &&
                     graph->ConnectDirect(filter->GetPin(1), sink->GetPin(0), nullptr) == S_OK &&
                     graph->Pause() == S_OK;
  std::filesystem::remove(subs);
  ComPtr<IMediaSample> in, out;
  if (!ready ||
      FAILED(source->Pin()->Allocator()->GetBuffer(in.ReleaseAndGetAddressOf(), nullptr, nullptr,
                                                   0)) ||
      FAILED(filter->OutputPin()->Allocator()->GetBuffer(out.ReleaseAndGetAddressOf(), nullptr,
                                                         nullptr, 0))) {
    state.SkipWithError("the pipeline does not connect");
    return;
  }
  uint8_t* data = nullptr;
  in->GetPointer(&data);
  for (int32_t i = 0; i + 1 < in->GetSize(); i += 2) {
    data[i] = static_cast<uint8_t>(16 + (i / 2) % 220);
    data[i + 1] = 0x80;
  }
  in->SetActualDataLength(in->GetSize());
  in->SetSyncPoint(true);

  REFERENCE_TIME start = 0;
  for (auto _ : state) {
    REFERENCE_TIME stop = start + kFrameTicks;
    in->SetTime(&start, &stop);
    benchmark::DoNotOptimize(filter->Transform(in.Get(), out.Get()));
    start = stop;
  }
  state.SetItemsProcessed(state.iterations());
  graph->Stop();
}

void Register() {
  const struct {
    const char* name;
    int32_t width, height;
  } sizes[] = {{"720x576", 720, 576}, {"1920x1080", 1920, 1080}};
  const struct {
    const char* name;
    GUID subtype;
  } formats[] = {
      {"YUY2", MEDIASUBTYPE_YUY2}, {"RGB32", MEDIASUBTYPE_RGB32}, {"RGB565", MEDIASUBTYPE_RGB565}};
  for (const auto& size : sizes) {
    for (const auto& format : formats) {
      for (const bool economic : {false, true}) {
        const std::string name = std::string("Transform/") + size.name + "/" + format.name +
                                 (economic ? "/economic" : "/every_border");
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
          Transform(state, size.width, size.height, format.subtype, economic);
        });
      }
    }
  }
}

const int kRegistered = (Register(), 0);

}  // namespace
}  // namespace korvalin
