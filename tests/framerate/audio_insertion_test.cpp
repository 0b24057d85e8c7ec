#include <gtest/gtest.h>

#include "framerate/audio_filter_insertion.h"
#include "framerate/audio_rate_filter.h"
#include "host/filter_graph.h"
#include "host/pin_helpers.h"
#include "host/test_filters.h"
#include "host/wav_file_source.h"
#include "host/wav_file_writer.h"
#include "host/wav_files.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using namespace host;
using namespace host::testing;

constexpr int32_t k24Fps = 416666;
constexpr int32_t kGenerousMs = 10000;
const WAVEFORMATEX kFormat = PcmFormat(48000);

// Stands for an audio renderer that was given something other than PCM.
class VideoTakingAudioRenderer : public RecordingSink, public IBasicAudio {
 public:
  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override {
    if (out && iid == IID_IBasicAudio) return GetInterface(static_cast<IBasicAudio*>(this), out);
    return RecordingSink::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT put_Volume(int32_t) override { return S_OK; }
  HRESULT get_Volume(int32_t* volume) override {
    *volume = 0;
    return S_OK;
  }
};

// Three buffers of silence in kFormat, the first carrying a change to another format.
class FormatChangingStream : public SourceStream {
 public:
  explicit FormatChangingStream(BaseFilter* filter) : SourceStream(filter, u"Out") {}
  HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
    return MediaTypesEqual(type, PcmMediaType(kFormat)) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override {
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    *type = PcmMediaType(kFormat);
    return S_OK;
  }
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
    return SizeBuffers(allocator, request, kFormat.nAvgBytesPerSec / 10);
  }
  HRESULT OnThreadStartPlay() override {
    sent_ = 0;
    return S_OK;
  }
  HRESULT FillBuffer(IMediaSample* sample) override {
    if (sent_ == 3) return S_FALSE;
    sample->SetActualDataLength(sample->GetSize());
    if (sent_++ == 0) {
      const AM_MEDIA_TYPE changed = PcmMediaType(PcmFormat(44100));
      sample->SetMediaType(&changed);
    }
    return S_OK;
  }

 private:
  int sent_ = 0;
};

class FormatChangingSource : public SourceFilter {
 public:
  FormatChangingSource() : SourceFilter(kSourceClsid) {
    AddStream(std::make_unique<FormatChangingStream>(this));
  }
};

class AudioInsertionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    inputData = CountingBytes(26400 * kFormat.nBlockAlign);  // 0.55 s: a part buffer at the end
    inputPath = folder.Write("in.wav", WavFileBytes(kFormat, inputData, "LIST\4\0\0\0tail"));
    outputPath = folder.path() / "out.wav";
    NewGraph();
  }
  // A graph holding a connected video chain, whose renderer's pin stands for the video input.
  void NewGraph() {
    graph = MakeCom<FilterGraph>(&registry);
    videoSource = MakeCom<CountingSource>(3);
    videoSink = MakeCom<RecordingSink>();
    wavSource = MakeCom<WavFileSource>(inputPath.string());
    writer = MakeCom<WavFileWriter>(outputPath.string());
    Add(videoSource.Get(), u"Video Source");
    Add(videoSink.Get(), u"Video Renderer");
    ASSERT_EQ(graph->ConnectDirect(videoSource->GetPin(0), videoSink->InPin(), nullptr), S_OK);
  }
  void Add(BaseFilter* filter, std::u16string_view name) {
    ASSERT_TRUE(SUCCEEDED(graph->AddFilter(filter, name)));
  }
  // The WAV source feeding `renderer`.
  void AddWavChain(BaseFilter* renderer) {
    ASSERT_EQ(wavSource->Open(), "");
    Add(wavSource.Get(), u"WAV Source");
    Add(renderer, u"Audio Renderer");
    ASSERT_EQ(graph->ConnectDirect(wavSource->GetPin(0), renderer->GetPin(0), nullptr), S_OK);
  }
  ComPtr<IBaseFilter> FindAudioFilter() {
    ComPtr<IBaseFilter> found;
    graph->FindFilterByName(kAudioRateFilterName, found.ReleaseAndGetAddressOf());
    return found;
  }
  int32_t RunToEnd() {
    EXPECT_EQ(graph->Run(), S_OK);
    int32_t code = 0;
    EXPECT_EQ(graph->WaitForCompletion(kGenerousMs, &code), S_OK);
    EXPECT_EQ(graph->Stop(), S_OK);
    return code;
  }

  korvalin::testing::TempFolder folder;
  std::string inputData;
  std::filesystem::path inputPath, outputPath;
  FilterRegistry registry;  // empty: nothing is inserted behind the test's back
  ComPtr<FilterGraph> graph;
  ComPtr<CountingSource> videoSource;
  ComPtr<RecordingSink> videoSink;
  ComPtr<WavFileSource> wavSource;
  ComPtr<WavFileWriter> writer;
};

TEST_F(AudioInsertionTest, SplicesOnceAndTheWriterGetsTheSameBytesAtTheRaisedRate) {
  AddWavChain(writer.Get());
  EXPECT_EQ(FindAudioRenderer(graph.Get()).Get(), static_cast<IBaseFilter*>(writer.Get()));

  InsertAudioFilter(graph.Get(), videoSink->InPin(), k24Fps);
  const ComPtr<IBaseFilter> audio = FindAudioFilter();
  ASSERT_TRUE(audio);
  InsertAudioFilter(graph.Get(), videoSink->InPin(), k24Fps);
  ComPtr<IBaseFilter> second;  // a second one would have had a number added to its name
  EXPECT_EQ(graph->FindFilterByName(u"Korvalin Audio 0001", second.ReleaseAndGetAddressOf()),
            VFW_E_NOT_FOUND);

  ComPtr<IPin> in, out;
  ASSERT_EQ(audio->FindPin(u"In", in.ReleaseAndGetAddressOf()), S_OK);
  ASSERT_EQ(audio->FindPin(u"Out", out.ReleaseAndGetAddressOf()), S_OK);
  IPin* writerPin = writer->GetPin(0);
  EXPECT_EQ(ConnectedPin(in.Get()).Get(), static_cast<IPin*>(wavSource->GetPin(0)));
  EXPECT_EQ(ConnectedPin(writerPin).Get(), out.Get());
  AM_MEDIA_TYPE writerType;
  ASSERT_EQ(writerPin->ConnectionMediaType(&writerType), S_OK);
  EXPECT_TRUE(MediaTypesEqual(writerType, PcmMediaType(RaisedWaveFormat(kFormat, k24Fps))));

  // Upstream fills the writer's own buffers.
  ComPtr<IMemAllocator> handedOut, writers;
  ASSERT_EQ(QueryAs<IMemInputPin>(in.Get())->GetAllocator(handedOut.ReleaseAndGetAddressOf()),
            S_OK);
  ASSERT_EQ(QueryAs<IMemInputPin>(writerPin)->GetAllocator(writers.ReleaseAndGetAddressOf()), S_OK);
  EXPECT_EQ(handedOut.Get(), writers.Get());
  EXPECT_EQ(static_cast<AudioRateFilter*>(audio.Get())->InputPin()->Allocator(), writers.Get());
  double seconds = 0;
  ASSERT_EQ(QueryAs<IMediaPosition>(audio.Get())->get_Duration(&seconds), S_OK);
  EXPECT_DOUBLE_EQ(seconds, 0.55);

  EXPECT_EQ(RunToEnd(), EC_COMPLETE);
  EXPECT_EQ(writer->Error(), "");
  const std::string written = ReadWholeFile(outputPath);
  const WavParse parse = ParseWavString(written);
  ASSERT_EQ(parse.error, "");
  EXPECT_EQ(parse.layout.format.nSamplesPerSec, 49999u);
  EXPECT_EQ(parse.layout.dataBytes, inputData.size());
  EXPECT_TRUE(written.substr(parse.layout.dataOffset) == inputData);
}

TEST_F(AudioInsertionTest, LeavesTheGraphAloneWhenThereIsNothingToDo) {
  enum Renderer { kWriter, kNone, kNotPcm };
  const struct {
    const char* name;
    int32_t rate;
    bool videoConnected;
    Renderer renderer;
  } cases[] = {
      {"no conversion", 0, true, kWriter},
      {"video not connected", k24Fps, false, kWriter},
      {"no audio renderer", k24Fps, true, kNone},
      {"renderer not on PCM", k24Fps, true, kNotPcm},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    NewGraph();
    if (c.renderer == kWriter) AddWavChain(writer.Get());
    if (c.renderer == kNone) Add(wavSource.Get(), u"WAV Source");
    if (c.renderer == kNotPcm) {
      auto renderer = MakeCom<VideoTakingAudioRenderer>();
      Add(renderer.Get(), u"Audio Renderer");
      auto source = MakeCom<CountingSource>(1);
      Add(source.Get(), u"Other Source");
      ASSERT_EQ(graph->ConnectDirect(source->GetPin(0), renderer->InPin(), nullptr), S_OK);
    }
    if (!c.videoConnected) {
      ASSERT_EQ(graph->Disconnect(videoSink->InPin()), S_OK);
    }
    InsertAudioFilter(graph.Get(), videoSink->InPin(), c.rate);
    EXPECT_FALSE(FindAudioFilter());
  }
}

TEST_F(AudioInsertionTest, AFormatChangeUpstreamStopsAtTheAudioFilter) {
  for (const bool insert : {true, false}) {
    SCOPED_TRACE(insert);
    NewGraph();
    auto source = MakeCom<FormatChangingSource>();
    Add(source.Get(), u"Audio Source");
    Add(writer.Get(), u"Audio Renderer");
    ASSERT_EQ(graph->ConnectDirect(source->GetPin(0), writer->GetPin(0), nullptr), S_OK);
    if (insert) InsertAudioFilter(graph.Get(), videoSink->InPin(), k24Fps);
    ASSERT_EQ(static_cast<bool>(FindAudioFilter()), insert);
    // The writer refuses a format change: it cannot write two formats into one file.
    EXPECT_EQ(RunToEnd(), insert ? EC_COMPLETE : EC_ERRORABORT);
    EXPECT_EQ(writer->BytesWritten(), insert ? 3 * kFormat.nAvgBytesPerSec / 10 : 0u);
  }
}

TEST(AudioRateFilterGraphTest, RefusesToConnectOutsideAGraph) {
  auto source = MakeCom<FormatChangingSource>();
  auto filter = MakeCom<AudioRateFilter>();
  EXPECT_EQ(source->GetPin(0)->Connect(filter->InputPin(), nullptr), VFW_E_NOT_IN_GRAPH);
  EXPECT_FALSE(filter->InputPin()->IsConnected());
}

}  // namespace
}  // namespace korvalin
