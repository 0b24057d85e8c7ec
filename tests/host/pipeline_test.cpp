#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "host/filter_graph.h"
#include "host/pin_helpers.h"
#include "host/transform_in_place_filter.h"
#include "test_filters.h"

namespace korvalin::host::testing {
namespace {

constexpr int32_t kGenerousMs = 10000;

IPin* In(BaseFilter* f) {
  return f->GetPin(0);
}
IPin* Out(BaseFilter* f, int index = 0) {
  return f->GetPin(index);
}

class PipelineTest : public ::testing::Test {
 protected:
  void Add(BaseFilter* filter, std::u16string_view name) {
    ASSERT_TRUE(SUCCEEDED(graph->AddFilter(filter, name)));
  }
  // Adds the filters and connects each one's last pin to the next one's first.
  void Chain(std::initializer_list<std::pair<BaseFilter*, std::u16string_view>> filters) {
    BaseFilter* previous = nullptr;
    for (const auto& [filter, name] : filters) {
      Add(filter, name);
      if (previous) {
        IPin* out = previous->GetPin(previous->GetPinCount() - 1);
        ASSERT_EQ(graph->ConnectDirect(out, In(filter), nullptr), S_OK);
      }
      previous = filter;
    }
  }
  // Runs the graph to the end of the stream and stops it.
  void RunToEnd() {
    ASSERT_EQ(graph->Run(), S_OK);
    int32_t code = 0;
    ASSERT_EQ(graph->WaitForCompletion(kGenerousMs, &code), S_OK);
    EXPECT_EQ(code, EC_COMPLETE);
    ASSERT_EQ(graph->Stop(), S_OK);
  }

  // Registers a filter taking video of `subtype` (GUID_NULL: any), counting the instances
  // made in `created`.
  void RegisterFilter(const CLSID& clsid, std::u16string name, uint32_t merit, GUID subtype,
                      std::function<ComPtr<BaseFilter>()> make) {
    REGFILTERPINS input{u"In", false,     false, false,
                        false, GUID_NULL, u"",   {{MEDIATYPE_Video, subtype}}};
    registry.Register({std::move(name),
                       clsid,
                       [this, make](IUnknown*, const IID& iid, void** out) {
                         ++created;
                         return make()->QueryInterface(iid, out);
                       },
                       true,
                       merit,
                       {input}});
  }

  int created = 0;
  FilterRegistry registry;
  ComPtr<FilterGraph> graph = MakeCom<FilterGraph>(&registry);
  ComPtr<CountingSource> source = MakeCom<CountingSource>(5);
  ComPtr<AddOneFilter> addOne = MakeCom<AddOneFilter>(2);
  ComPtr<RecordingSink> sink = MakeCom<RecordingSink>();
};

TEST_F(PipelineTest, SamplesFlowThroughTransformToEndOfStream) {
  Chain({{source.Get(), u"Source"}, {addOne.Get(), u"AddOne"}, {sink.Get(), u"Sink"}});
  RunToEnd();

  // Frame 2 is dropped by S_FALSE from Transform.
  const auto frames = sink->Frames();
  ASSERT_EQ(frames.size(), 4u);
  const int expected[] = {1, 2, 4, 5};
  for (std::size_t i = 0; i < frames.size(); ++i) EXPECT_EQ(frames[i].firstByte, expected[i]);
  EXPECT_EQ(frames[2].start, 3 * kFrameTime);
  EXPECT_EQ(sink->segmentStart_, kFrameTime);  // the source's segment passed the transform

  // A second run from the start gives the same stream again.
  sink->frames_.clear();
  RunToEnd();
  EXPECT_EQ(sink->Frames().size(), 4u);
}

TEST_F(PipelineTest, StopWhileStreamingReturnsAndRunsAgain) {
  auto endless = MakeCom<CountingSource>(1 << 30);
  Chain({{endless.Get(), u"Source"}, {addOne.Get(), u"AddOne"}, {sink.Get(), u"Sink"}});
  for (int run = 0; run < 2; ++run) {
    sink->frames_.clear();
    ASSERT_EQ(graph->Run(), S_OK);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (sink->Frames().size() < 3 && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
    }
    EXPECT_GE(sink->Frames().size(), 3u);
    int32_t code = 0;
    EXPECT_EQ(graph->WaitForCompletion(0, &code), E_ABORT);
    EXPECT_EQ(graph->Stop(), S_OK);  // wakes the source waiting for a buffer
  }
}

TEST_F(PipelineTest, FailingSourceAbortsTheRunAndTellsItsDuration) {
  auto failing = MakeCom<CountingSource>(5, 2);
  auto position = QueryAs<IMediaPosition>(static_cast<IBaseFilter*>(sink.Get()));
  double seconds = 0;
  EXPECT_EQ(position->get_Duration(&seconds), VFW_E_NOT_CONNECTED);
  Chain({{failing.Get(), u"Source"}, {sink.Get(), u"Sink"}});
  ASSERT_EQ(position->get_Duration(&seconds), S_OK);  // the sink asks upstream
  EXPECT_DOUBLE_EQ(seconds, 0.2);
  ASSERT_EQ(graph->get_Duration(&seconds), S_OK);
  EXPECT_DOUBLE_EQ(seconds, 0.2);
  ASSERT_EQ(graph->Run(), S_OK);
  int32_t code = 0;
  ASSERT_EQ(graph->WaitForCompletion(kGenerousMs, &code), S_OK);
  EXPECT_EQ(code, EC_ERRORABORT);
  intptr_t param1 = 0, param2 = 0;
  ASSERT_EQ(graph->GetEvent(&code, &param1, &param2, kGenerousMs), S_OK);
  EXPECT_EQ(code, EC_ERRORABORT);
  EXPECT_EQ(param1, E_FAIL);
  EXPECT_EQ(graph->Stop(), S_OK);
  EXPECT_EQ(sink->Frames().size(), 2u);
}

TEST_F(PipelineTest, SameNameGetsBlankAndNumber) {
  auto second = MakeCom<AddOneFilter>();
  auto third = MakeCom<AddOneFilter>();
  Add(addOne.Get(), u"Korvalin");
  EXPECT_EQ(graph->AddFilter(second.Get(), u"Korvalin"), VFW_S_DUPLICATE_NAME);
  EXPECT_EQ(graph->AddFilter(third.Get(), u"Korvalin"), VFW_S_DUPLICATE_NAME);
  FILTER_INFO info;
  ASSERT_EQ(third->QueryFilterInfo(&info), S_OK);
  EXPECT_EQ(info.achName, u"Korvalin 0002");
  EXPECT_EQ(info.pGraph.Get(), static_cast<IFilterGraph*>(graph.Get()));

  ComPtr<IBaseFilter> found;
  ASSERT_EQ(graph->FindFilterByName(u"Korvalin 0001", found.ReleaseAndGetAddressOf()), S_OK);
  EXPECT_EQ(found.Get(), static_cast<IBaseFilter*>(second.Get()));
  EXPECT_EQ(graph->FindFilterByName(u"Korvalin 0003", found.ReleaseAndGetAddressOf()),
            VFW_E_NOT_FOUND);

  ASSERT_EQ(graph->RemoveFilter(second.Get()), S_OK);
  EXPECT_EQ(graph->FindFilterByName(u"Korvalin 0001", found.ReleaseAndGetAddressOf()),
            VFW_E_NOT_FOUND);
}

TEST_F(PipelineTest, Refusals) {
  auto rgbSink = MakeCom<RecordingSink>(MEDIASUBTYPE_RGB32);
  auto stranger = MakeCom<RecordingSink>();
  Add(source.Get(), u"Source");
  Add(addOne.Get(), u"AddOne");
  Add(rgbSink.Get(), u"RGB");
  Add(sink.Get(), u"Sink");

  // The output connects only after the input; before, it has no type to offer either.
  const AM_MEDIA_TYPE yuy2 = VideoType();
  EXPECT_EQ(graph->ConnectDirect(Out(addOne.Get(), 1), In(sink.Get()), &yuy2), E_UNEXPECTED);
  EXPECT_EQ(graph->ConnectDirect(Out(addOne.Get(), 1), In(sink.Get()), nullptr),
            VFW_E_NO_ACCEPTABLE_TYPES);
  ASSERT_EQ(graph->ConnectDirect(Out(source.Get()), In(addOne.Get()), nullptr), S_OK);
  EXPECT_EQ(graph->ConnectDirect(Out(source.Get()), In(addOne.Get()), nullptr),
            VFW_E_ALREADY_CONNECTED);
  EXPECT_EQ(graph->ConnectDirect(Out(addOne.Get(), 1), In(rgbSink.Get()), nullptr),
            VFW_E_TYPE_NOT_ACCEPTED);
  EXPECT_EQ(graph->ConnectDirect(Out(addOne.Get(), 1), In(stranger.Get()), nullptr),
            VFW_E_NOT_IN_GRAPH);
  EXPECT_EQ(graph->ConnectDirect(In(addOne.Get()), Out(addOne.Get(), 1), nullptr),
            VFW_E_INVALID_DIRECTION);

  // A refused attempt leaves both pins unconnected.
  ComPtr<IPin> other;
  EXPECT_EQ(Out(addOne.Get(), 1)->ConnectedTo(other.ReleaseAndGetAddressOf()), VFW_E_NOT_CONNECTED);
  EXPECT_FALSE(other);
  AM_MEDIA_TYPE type;
  EXPECT_EQ(In(rgbSink.Get())->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(graph->Reconnect(In(rgbSink.Get())), VFW_E_NOT_CONNECTED);

  const AM_MEDIA_TYPE rgb = VideoType(MEDIASUBTYPE_RGB32);
  EXPECT_EQ(In(addOne.Get())->QueryAccept(&rgb), S_FALSE);

  // No renderer is connected, so the run completes at once.
  ASSERT_EQ(graph->Run(), S_OK);
  EXPECT_EQ(graph->Disconnect(In(addOne.Get())), VFW_E_NOT_STOPPED);
  int32_t code = 0;
  EXPECT_EQ(graph->WaitForCompletion(kGenerousMs, &code), S_OK);
  ASSERT_EQ(graph->Stop(), S_OK);
  EXPECT_EQ(graph->WaitForCompletion(0, &code), VFW_E_WRONG_STATE);
}

// A transform that reconnects its output whenever its input connects, as a filter does whose
// output type follows the input.
class ReconnectingFilter : public AddOneFilter {
 public:
  HRESULT CompleteConnect(PIN_DIRECTION direction, IPin* pin) override {
    if (direction == PINDIR_INPUT && OutputPin()->IsConnected()) {
      Graph()->Reconnect(OutputPin());
    }
    return AddOneFilter::CompleteConnect(direction, pin);
  }
};

TEST_F(PipelineTest, ReconnectRenegotiatesAndKeepsConnection) {
  auto upper = MakeCom<ReconnectingFilter>();
  Chain({{source.Get(), u"Source"},
         {upper.Get(), u"Upper"},
         {addOne.Get(), u"AddOne"},
         {sink.Get(), u"Sink"}});
  EXPECT_EQ(addOne->completions_[PINDIR_INPUT], 1);

  // The input connects again: the output is reconnected from inside that connection.
  ASSERT_EQ(graph->Reconnect(In(upper.Get())), S_OK);
  EXPECT_EQ(addOne->completions_[PINDIR_INPUT], 2);
  EXPECT_EQ(upper->completions_[PINDIR_OUTPUT], 2);
  EXPECT_TRUE(upper->OutputPin()->IsConnected());
  RunToEnd();
  EXPECT_EQ(sink->Frames().size(), 4u);  // AddOne drops 2, which upper made from 1
}

TEST_F(PipelineTest, ConnectUsesFilterInGraphBeforeRegisteredOnes) {
  RegisterFilter(kToRgbClsid, u"Converter", MERIT_PREFERRED, MEDIASUBTYPE_YUY2,
                 [] { return MakeCom<ToRgbFilter>(); });
  auto rgbSink = MakeCom<RecordingSink>(MEDIASUBTYPE_RGB32);
  auto inGraph = MakeCom<ToRgbFilter>();
  Add(source.Get(), u"Source");
  Add(rgbSink.Get(), u"RGB");
  Add(inGraph.Get(), u"InGraph");
  ASSERT_EQ(graph->Connect(Out(source.Get()), In(rgbSink.Get())), S_OK);
  EXPECT_EQ(created, 0);
  EXPECT_TRUE(inGraph->OutputPin()->IsConnected());

  // With no free converter left in the graph, the registered one is made and added.
  auto source2 = MakeCom<CountingSource>(1);
  auto rgbSink2 = MakeCom<RecordingSink>(MEDIASUBTYPE_RGB32);
  Add(source2.Get(), u"Source");
  Add(rgbSink2.Get(), u"RGB");
  ASSERT_EQ(graph->Connect(Out(source2.Get()), In(rgbSink2.Get())), S_OK);
  EXPECT_EQ(created, 1);
  ComPtr<IBaseFilter> converter;
  EXPECT_EQ(graph->FindFilterByName(u"Converter", converter.ReleaseAndGetAddressOf()), S_OK);

  // A connection that works directly takes no filter.
  auto source3 = MakeCom<CountingSource>(1);
  Add(source3.Get(), u"Source");
  Add(sink.Get(), u"Sink");
  ASSERT_EQ(graph->Connect(Out(source3.Get()), In(sink.Get())), S_OK);
  EXPECT_EQ(created, 1);
}

// A filter that never connects but puts a converter into the graph when asked to, as a
// loader does.
class LoaderFilter : public AddOneFilter {
 public:
  HRESULT CheckConnect(PIN_DIRECTION direction, IPin*) override {
    if (direction == PINDIR_INPUT) Graph()->AddFilter(MakeCom<ToRgbFilter>().Get(), u"Loaded");
    return E_FAIL;
  }
};

TEST_F(PipelineTest, FilterPlacedByFailedCandidateIsTriedBeforeNextRegistered) {
  RegisterFilter(kAddOneClsid, u"Loader", MERIT_PREFERRED + 1, GUID_NULL,
                 [] { return MakeCom<LoaderFilter>(); });
  RegisterFilter(kToRgbClsid, u"Converter", MERIT_PREFERRED, MEDIASUBTYPE_YUY2,
                 [] { return MakeCom<ToRgbFilter>(); });
  auto rgbSink = MakeCom<RecordingSink>(MEDIASUBTYPE_RGB32);
  Add(source.Get(), u"Source");
  Add(rgbSink.Get(), u"RGB");
  ASSERT_EQ(graph->Connect(Out(source.Get()), In(rgbSink.Get())), S_OK);
  EXPECT_EQ(created, 1);  // the loader; its converter did the job
  ComPtr<IBaseFilter> filter;
  EXPECT_EQ(graph->FindFilterByName(u"Loaded", filter.ReleaseAndGetAddressOf()), S_OK);
  EXPECT_EQ(graph->FindFilterByName(u"Loader", filter.ReleaseAndGetAddressOf()), VFW_E_NOT_FOUND);
  RunToEnd();
  EXPECT_EQ(rgbSink->Frames().size(), 5u);
}

TEST_F(PipelineTest, RenderBuildsChainFromRegisteredFilters) {
  RegisterFilter(MakeGuid("11111111-0000-4000-8000-0000000000FF"), u"Unwanted", MERIT_DO_NOT_USE,
                 GUID_NULL, [] { return MakeCom<RecordingSink>(); });
  RegisterFilter(kSinkClsid, u"Sink", MERIT_UNLIKELY, GUID_NULL,
                 [] { return MakeCom<RecordingSink>(MEDIASUBTYPE_RGB32); });
  RegisterFilter(kToRgbClsid, u"Converter", MERIT_NORMAL, MEDIASUBTYPE_YUY2,
                 [] { return MakeCom<ToRgbFilter>(); });
  Add(source.Get(), u"Source");

  // The converter has the higher merit; it stays because the sink renders its output.
  ASSERT_EQ(graph->Render(Out(source.Get())), S_OK);
  EXPECT_EQ(created, 2);
  ComPtr<IBaseFilter> added;
  ASSERT_EQ(graph->FindFilterByName(u"Converter", added.ReleaseAndGetAddressOf()), S_OK);
  ASSERT_EQ(graph->FindFilterByName(u"Sink", added.ReleaseAndGetAddressOf()), S_OK);
  EXPECT_EQ(graph->FindFilterByName(u"Unwanted", added.ReleaseAndGetAddressOf()), VFW_E_NOT_FOUND);
  RunToEnd();
}

TEST_F(PipelineTest, InPlaceFilterPassesSamplesOn) {
  class Marker : public TransformInPlaceFilter {
   public:
    Marker() : TransformInPlaceFilter(kAddOneClsid) {}
    HRESULT CheckInputType(const AM_MEDIA_TYPE&) override { return S_OK; }
    HRESULT Transform(IMediaSample* sample) override {
      uint8_t* data = nullptr;
      sample->GetPointer(&data);
      data[0] = static_cast<uint8_t>(data[0] + 100);
      return S_OK;
    }
  };
  auto marker = MakeCom<Marker>();
  Chain({{source.Get(), u"Source"}, {marker.Get(), u"Marker"}, {sink.Get(), u"Sink"}});
  // The output's connection made the input reconnect onto the sink's allocator.
  EXPECT_EQ(marker->InputPin()->Allocator(), sink->InPin()->Allocator());
  RunToEnd();
  ASSERT_EQ(sink->Frames().size(), 5u);
  EXPECT_EQ(sink->Frames()[4].firstByte, 104);
}

}  // namespace
}  // namespace korvalin::host::testing
