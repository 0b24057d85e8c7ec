#include <algorithm>
#include <string>

#include "filter_harness.h"
#include "host/media_sample.h"
#include "support/temp_folder.h"

namespace korvalin::testing {
namespace {

// One subtitle from 200 ms to 400 ms, one from 1000 ms to 2000 ms.
constexpr const char* kSubRip =
    "1\n00:00:00,200 --> 00:00:00,400\nHELLO\n\n"
    "2\n00:00:01,000 --> 00:00:02,000\nWORLD\n\n";

// Overlays are drawn bright over the grey picture.
bool HasOverlay(const RecordedFrame& frame) {
  for (std::size_t i = 0; i < frame.bytes.size(); i += 2)
    if (frame.bytes[i] > 0xC0) return true;
  return false;
}

TEST(VideoFilterTest, FirstSampleSwitchesInputToTopDownWhetherOrNotUpstreamConfirms) {
  for (bool confirm : {false, true}) {
    FilterPipeline pipeline(Plain(), Yuy2Type(64, 4));
    ASSERT_EQ(pipeline.Start(), S_OK);
    VideoInputPin* input = pipeline.filter->VideoInput();
    EXPECT_GT(ToVideoFormat(input->CurrentMediaType()).biHeight, 0);
    PushOptions first = Frame(0);
    first.keepAttachedType = confirm;
    ASSERT_EQ(pipeline.Push(first), S_OK);
    EXPECT_EQ(input->topDownPending, 0);
    EXPECT_EQ(ToVideoFormat(input->CurrentMediaType()).biHeight, -4);
    EXPECT_EQ(pipeline.sink->frames.size(), 1u);
  }
}

// A preroll sample gives no output; a sample's own type replaces the input type if accepted,
// else the frame is dropped.
TEST(VideoFilterTest, PrerollAndSampleTypes) {
  FilterPipeline pipeline(Plain(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Start(), S_OK);
  const AM_MEDIA_TYPE& current = pipeline.filter->VideoInput()->CurrentMediaType();
  PushOptions preroll = Frame(0);
  preroll.preroll = true;
  ASSERT_EQ(pipeline.Push(preroll), S_OK);
  EXPECT_TRUE(pipeline.sink->frames.empty());
  AM_MEDIA_TYPE refused = Yuy2Type(64, 4);
  refused.subtype = MEDIASUBTYPE_RGB32;
  PushOptions bad = Frame(0);
  bad.attachType = &refused;
  ASSERT_EQ(pipeline.Push(bad), S_OK);
  EXPECT_TRUE(pipeline.sink->frames.empty());
  EXPECT_EQ(current.subtype, MEDIASUBTYPE_YUY2);
  const AM_MEDIA_TYPE narrower = Yuy2Type(60, -4);
  PushOptions good = Frame(1);
  good.attachType = &narrower;
  ASSERT_EQ(pipeline.Push(good), S_OK);
  ASSERT_EQ(pipeline.sink->frames.size(), 1u);
  EXPECT_EQ(ToVideoFormat(current).biWidth, 60);
}

// Economic mode writes the borders (8% overscan of 64 x 4: two black columns each side) on the
// three frames after a change only; frames 0-4 are pushed, then the change, then frames 5-9.
TEST(VideoFilterTest, EconomicBordersOnThreeFramesAfterEachChange) {
  using Change = void (*)(FilterPipeline&);
  const struct {
    const char* name;
    bool economic;
    Change change;
    const char* black;
  } cases[] = {
      {"connection", true, [](FilterPipeline&) {}, "1110000000"},
      {"new segment", true,
       [](FilterPipeline& p) { EXPECT_EQ(p.filter->GetPin(0)->NewSegment(0, 1e9, 1.0), S_OK); },
       "1110011100"},
      {"new output type", true,
       [](FilterPipeline& p) {
         p.sink->InPin()->own_->SetPendingType(p.sink->InPin()->CurrentMediaType());
       },
       "1110011100"},
      {"economic off", false, [](FilterPipeline&) {}, "1111111111"},
  };
  for (const auto& c : cases) {
    Settings settings = Plain();
    settings.bOverscan = 1;
    settings.Overscan = 8;
    settings.Economic = c.economic ? 1 : 0;
    FilterPipeline pipeline(settings, Yuy2Type(64, 4));
    ASSERT_EQ(pipeline.Start(), S_OK);
    std::string black;
    for (int i = 0; i < 10; ++i) {
      if (i == 5) c.change(pipeline);
      EXPECT_EQ(pipeline.Push(Frame(i)), S_OK);
      EXPECT_EQ(pipeline.Last().start, i * kFrameTicks);
      EXPECT_EQ(pipeline.Last().stop, (i + 1) * kFrameTicks);
      const std::vector<uint8_t>& bytes = pipeline.Last().bytes;
      black += bytes[0] == 0x10 && bytes[1] == 0x80 && bytes[2] == 0x10 ? '1' : '0';
    }
    EXPECT_EQ(black, c.black) << c.name;
  }
}

class SubtitleTest : public ::testing::Test {
 protected:
  void Start(Settings settings) {
    pipeline = std::make_unique<FilterPipeline>(settings, Yuy2Type(320, 240));
    ASSERT_EQ(pipeline->Start(), S_OK);
    ASSERT_EQ(pipeline->filter->SelectSubtitle(folder.Write("a.srt", kSubRip).c_str(), nullptr), S_OK);
  }
  bool PushAndLook(PushOptions options) {
    EXPECT_EQ(pipeline->Push(options), S_OK);
    return HasOverlay(pipeline->Last());
  }
  TempFolder folder;
  std::unique_ptr<FilterPipeline> pipeline;
};

TEST_F(SubtitleTest, ShowsDuringItsIntervalWithSegmentStartAddedBeforeTheDivision) {
  Start(Plain());
  const struct {
    int64_t startMs;
    bool shown;
  } cases[] = {{150, false}, {160, true}, {400, true}, {401, false}, {990, true}, {2001, false}};
  for (const auto& c : cases) EXPECT_EQ(PushAndLook(FrameAtMs(c.startMs)), c.shown) << c.startMs;
  // 9999 + 9990001 ticks is 1000 ms; each divided alone gives only 0 + 999.
  ASSERT_EQ(pipeline->filter->GetPin(0)->NewSegment(9990001, INT64_MAX, 1.0), S_OK);
  EXPECT_TRUE(PushAndLook(Between(9999, 10000)));
  ASSERT_EQ(pipeline->filter->GetPin(0)->NewSegment(0, INT64_MAX, 1.0), S_OK);
  EXPECT_FALSE(PushAndLook(Between(9999, 10000)));
}

TEST_F(SubtitleTest, UntimedSampleHasNoTimesAndNoOverlays) {
  Settings settings = Plain();
  settings.OSD.OSDWorldTime = 1;
  Start(settings);
  PushOptions untimed = FrameAtMs(200);
  untimed.timed = false;
  EXPECT_FALSE(PushAndLook(untimed));
  EXPECT_FALSE(pipeline->Last().timed);
  EXPECT_EQ(pipeline->filter->FrameState().lastClockState, -1);
  EXPECT_EQ(pipeline->filter->FrameState().lastSubtitleState, -1);
  EXPECT_TRUE(PushAndLook(FrameAtMs(200)));  // timed: clock and subtitle show
  EXPECT_EQ(pipeline->filter->FrameState().lastClockState, 0);
}

// Economic mode: the load, and the subtitle coming, staying and leaving.
TEST_F(SubtitleTest, EconomicRefreshFollowsTheSubtitle) {
  Settings settings = Plain();
  settings.Economic = 1;
  Start(settings);
  EXPECT_EQ(pipeline->filter->FrameState().borderRefresh, 3);
  const struct {
    int64_t startMs;
    int32_t subtitleState, refreshAfter;
  } steps[] = {{0, -1, 2},   {40, -1, 1},  {80, -1, 0},  {120, -1, 0}, {200, 0, 2},  {240, 1, 1},
               {280, 1, 0},  {320, 1, 0},  {440, -1, 2}, {480, -1, 1}, {520, -1, 0}, {560, -1, 0}};
  for (const auto& step : steps) {
    ASSERT_EQ(pipeline->Push(FrameAtMs(step.startMs)), S_OK);
    EXPECT_EQ(pipeline->filter->FrameState().lastSubtitleState, step.subtitleState) << step.startMs;
    EXPECT_EQ(pipeline->filter->FrameState().borderRefresh, step.refreshAfter) << step.startMs;
  }
}

// The elapsed-time clock draws a new image each second, which restarts the refresh.
TEST(VideoFilterTest, EconomicRefreshRestartsOnEachNewClockImage) {
  Settings settings = Plain();
  settings.Economic = 1;
  settings.OSD.OSDVideoTime = 1;
  FilterPipeline pipeline(settings, Yuy2Type(320, 240));
  ASSERT_EQ(pipeline.Start(), S_OK);
  for (int frame = 0; frame < 27; ++frame) {
    ASSERT_EQ(pipeline.Push(Frame(frame)), S_OK);
    const int32_t sinceImage = frame < 25 ? frame : frame - 25;  // 0:00:00, then 0:00:01
    EXPECT_EQ(pipeline.filter->FrameState().lastClockState, sinceImage == 0 ? 0 : 1) << frame;
    EXPECT_EQ(pipeline.filter->FrameState().borderRefresh, std::max(0, 2 - sinceImage)) << frame;
  }
}

// A standalone timed sample of 320 x 240 whose flag and time answers a test sets.
class ScriptedSample : public MediaSample {
 public:
  ScriptedSample() : MediaSample(nullptr, pixels, sizeof pixels) {
    SetActualDataLength(sizeof pixels);
    const REFERENCE_TIME start = 0, stop = kFrameTicks;
    SetTime(&start, &stop);
  }
  uint32_t NonDelegatingRelease() override { return UnknownBase::NonDelegatingRelease(); }
  HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* end) override {
    if (timeAnswer == S_OK) return MediaSample::GetTime(start, end);
    *start = 0;
    *end = 1;
    return timeAnswer;
  }
  HRESULT IsSyncPoint() override { return syncAnswer; }
  HRESULT IsPreroll() override { return prerollAnswer; }
  HRESULT IsDiscontinuity() override { return discontinuityAnswer; }
  HRESULT timeAnswer = S_OK, syncAnswer = S_OK, prerollAnswer = S_FALSE,
          discontinuityAnswer = S_FALSE;
  inline static uint8_t pixels[320 * 240 * 2];
};

// Transform fed directly, with answers a real sample never gives.
TEST(VideoFilterTransformTest, SampleAnswersAndOutputsItCannotWrite) {
  Settings settings = Plain();
  settings.OSD.OSDWorldTime = 1;
  FilterPipeline pipeline(settings, Yuy2Type(320, 240));
  ASSERT_EQ(pipeline.Start(), S_OK);
  ComPtr<IMediaSample> out;
  const auto fresh = [&] {
    out.Reset();
    ASSERT_EQ(pipeline.filter->OutputPin()->Allocator()->GetBuffer(out.ReleaseAndGetAddressOf(),
                                                                   nullptr, nullptr, 0),
              S_OK);
  };
  fresh();
  const ComPtr<ScriptedSample> scripted = MakeCom<ScriptedSample>();
  IMediaSample* in = scripted.Get();

  // A start without a stop counts as untimed.
  scripted->timeAnswer = VFW_S_NO_STOP_TIME;
  ASSERT_EQ(pipeline.filter->Transform(in, out.Get()), S_OK);
  REFERENCE_TIME gotStart, gotStop;
  EXPECT_EQ(out->GetTime(&gotStart, &gotStop), VFW_E_SAMPLE_TIME_NOT_SET);
  EXPECT_EQ(pipeline.filter->FrameState().lastClockState, -1);
  scripted->timeAnswer = S_OK;

  // S_OK sets a flag, S_FALSE clears it, any other answer drops the frame; media times pass.
  const int64_t mediaStart = 7, mediaStop = 8;
  scripted->SetMediaTime(&mediaStart, &mediaStop);
  const struct {
    HRESULT sync, preroll, discontinuity, result;
  } cases[] = {
      {S_OK, S_FALSE, S_FALSE, S_OK},        {E_FAIL, S_FALSE, S_FALSE, S_FALSE},
      {S_OK, VFW_S_NO_STOP_TIME, S_FALSE, S_FALSE}, {S_OK, S_FALSE, E_NOTIMPL, S_FALSE},
      {S_FALSE, S_FALSE, S_OK, S_OK},
  };
  for (const auto& c : cases) {
    scripted->syncAnswer = c.sync;
    scripted->prerollAnswer = c.preroll;
    scripted->discontinuityAnswer = c.discontinuity;
    EXPECT_EQ(pipeline.filter->Transform(scripted.Get(), out.Get()), c.result);
    if (c.result != S_OK) continue;
    EXPECT_EQ(out->IsSyncPoint(), c.sync);
    EXPECT_EQ(out->IsDiscontinuity(), c.discontinuity);
    int64_t gotMediaStart = 0, gotMediaStop = 0;
    EXPECT_EQ(out->GetMediaTime(&gotMediaStart, &gotMediaStop), S_OK);
    EXPECT_EQ(gotMediaStop, 8);
  }

  // An unknown subtype or an output larger than its buffer is delivered unwritten.
  AM_MEDIA_TYPE& output = pipeline.filter->OutputPin()->CurrentMediaType();
  const AM_MEDIA_TYPE agreed = output;
  output.subtype = MEDIASUBTYPE_RGB24;
  fresh();
  EXPECT_EQ(pipeline.filter->Transform(in, out.Get()), S_OK);
  EXPECT_EQ(out->GetActualDataLength(), 0);
  output = Yuy2Type(320, 2400);
  fresh();
  EXPECT_EQ(pipeline.filter->Transform(in, out.Get()), S_OK);
  EXPECT_EQ(out->GetActualDataLength(), 0);
  output = agreed;
  EXPECT_EQ(pipeline.filter->Transform(in, out.Get()), S_OK);
  EXPECT_EQ(out->GetActualDataLength(), 320 * 240 * 2);
}

}  // namespace
}  // namespace korvalin::testing
