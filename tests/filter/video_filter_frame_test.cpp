#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "filter_harness.h"

namespace korvalin::testing {
namespace {

Settings Defaults() {
  Settings settings{Settings::DefaultsOnly{}};
  settings.bFill2 = 0;
  return settings;
}

// A 64 x 4 picture with 8% overscan: 2 black columns on each side, 68 x 4 out.
Settings WithBorders(bool economic) {
  Settings settings = Defaults();
  settings.bOverscan = 1;
  settings.Overscan = 8;
  settings.Economic = economic ? 1 : 0;
  return settings;
}

bool LeftBorderIsBlack(const RecordedFrame& frame) {
  return frame.bytes.size() >= 4 && frame.bytes[0] == 0x10 && frame.bytes[1] == 0x80 &&
         frame.bytes[2] == 0x10 && frame.bytes[3] == 0x80;
}

PushOptions At(int frame) {
  PushOptions options;
  options.start = frame * kFrameTicks;
  options.stop = options.start + kFrameTicks;
  return options;
}

TEST(VideoFilterFrameTest, PrerollSampleYieldsNoOutput) {
  FilterPipeline pipeline(Defaults(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Start(), S_OK);
  PushOptions preroll = At(0);
  preroll.preroll = true;
  ASSERT_EQ(pipeline.source->Pin()->Push(preroll), S_OK);
  EXPECT_TRUE(pipeline.sink->frames.empty());
  ASSERT_EQ(pipeline.source->Pin()->Push(At(1)), S_OK);
  EXPECT_EQ(pipeline.sink->frames.size(), 1u);
}

TEST(VideoFilterFrameTest, FirstSampleWithoutTypeSwitchesInputToTopDown) {
  FilterPipeline pipeline(Defaults(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Start(), S_OK);
  VideoInputPin* input = pipeline.filter->VideoInput();
  EXPECT_EQ(input->topDownPending, 1);
  EXPECT_GT(ToVideoFormat(input->CurrentMediaType()).biHeight, 0);
  ASSERT_EQ(pipeline.source->Pin()->Push(At(0)), S_OK);
  EXPECT_EQ(input->topDownPending, 0);
  EXPECT_EQ(ToVideoFormat(input->CurrentMediaType()).biHeight, -4);
}

TEST(VideoFilterFrameTest, UpstreamConfirmingTopDownKeepsItsType) {
  FilterPipeline pipeline(Defaults(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Start(), S_OK);
  PushOptions confirm = At(0);
  confirm.keepAttachedType = true;
  ASSERT_EQ(pipeline.source->Pin()->Push(confirm), S_OK);
  VideoInputPin* input = pipeline.filter->VideoInput();
  EXPECT_EQ(input->topDownPending, 0);
  EXPECT_EQ(ToVideoFormat(input->CurrentMediaType()).biHeight, -4);
  EXPECT_EQ(pipeline.sink->frames.size(), 1u);
}

TEST(VideoFilterFrameTest, SampleTypeReplacesInputTypeOrDropsFrame) {
  FilterPipeline pipeline(Defaults(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Start(), S_OK);
  VideoInputPin* input = pipeline.filter->VideoInput();

  AM_MEDIA_TYPE refused = Yuy2Type(64, 4);
  refused.subtype = MEDIASUBTYPE_RGB32;
  PushOptions bad = At(0);
  bad.attachType = &refused;
  ASSERT_EQ(pipeline.source->Pin()->Push(bad), S_OK);
  EXPECT_TRUE(pipeline.sink->frames.empty());
  EXPECT_EQ(input->CurrentMediaType().subtype, MEDIASUBTYPE_YUY2);
  EXPECT_EQ(ToVideoFormat(input->CurrentMediaType()).biWidth, 64);

  const AM_MEDIA_TYPE narrower = Yuy2Type(60, -4);
  PushOptions good = At(1);
  good.attachType = &narrower;
  ASSERT_EQ(pipeline.source->Pin()->Push(good), S_OK);
  ASSERT_EQ(pipeline.sink->frames.size(), 1u);
  EXPECT_EQ(ToVideoFormat(input->CurrentMediaType()).biWidth, 60);
}

TEST(VideoFilterFrameTest, TimesFlagsAndMediaTimesPassThrough) {
  FilterPipeline pipeline(Defaults(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Start(), S_OK);
  struct Case {
    bool sync, discontinuity, mediaTimes;
  };
  const Case cases[] = {{true, false, false}, {false, true, true}, {true, true, true}};
  for (const Case& c : cases) {
    PushOptions options = At(3);
    options.syncPoint = c.sync;
    options.discontinuity = c.discontinuity;
    options.mediaTimes = c.mediaTimes;
    ASSERT_EQ(pipeline.source->Pin()->Push(options), S_OK);
    const RecordedFrame& frame = pipeline.sink->frames.back();
    EXPECT_TRUE(frame.timed);
    EXPECT_EQ(frame.start, 3 * kFrameTicks);
    EXPECT_EQ(frame.stop, 4 * kFrameTicks);
    EXPECT_EQ(frame.syncPoint, c.sync);
    EXPECT_EQ(frame.discontinuity, c.discontinuity);
    EXPECT_FALSE(frame.preroll);
    EXPECT_EQ(frame.mediaTimed, c.mediaTimes);
    EXPECT_EQ(frame.bytes.size(), 64u * 4 * 2);
  }
}

TEST(VideoFilterFrameTest, UntimedSampleHasNoTimesAndNoOverlays) {
  Settings settings = Defaults();
  settings.OSD.OSDWorldTime = 1;
  FilterPipeline pipeline(settings, Yuy2Type(320, 240));
  ASSERT_EQ(pipeline.Start(), S_OK);
  PushOptions untimed = At(0);
  untimed.timed = false;
  ASSERT_EQ(pipeline.source->Pin()->Push(untimed), S_OK);
  ASSERT_EQ(pipeline.sink->frames.size(), 1u);
  const RecordedFrame& frame = pipeline.sink->frames[0];
  EXPECT_FALSE(frame.timed);
  for (std::size_t i = 0; i < frame.bytes.size(); i += 2) ASSERT_EQ(frame.bytes[i], 0x80);
  EXPECT_EQ(pipeline.filter->lastClockState, -1);
  ASSERT_EQ(pipeline.source->Pin()->Push(At(0)), S_OK);  // the clock shows on timed frames
  EXPECT_EQ(pipeline.filter->lastClockState, 0);
}

// Economic mode: borders only on the three frames after each change.
class EconomicTest : public ::testing::Test {
 protected:
  // Pushes `count` frames from `first` on and answers which had black borders.
  std::vector<bool> Borders(int first, int count) {
    std::vector<bool> black;
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(pipeline.source->Pin()->Push(At(first + i)), S_OK);
      black.push_back(LeftBorderIsBlack(pipeline.sink->frames.back()));
    }
    return black;
  }
  const std::vector<bool> kThreeThenNone{true, true, true, false, false};
  FilterPipeline pipeline{WithBorders(true), Yuy2Type(64, 4)};
};

TEST_F(EconomicTest, AfterConnection) {
  ASSERT_EQ(pipeline.Start(), S_OK);
  EXPECT_EQ(Borders(0, 5), kThreeThenNone);
}

TEST_F(EconomicTest, AfterNewSegment) {
  ASSERT_EQ(pipeline.Start(), S_OK);
  Borders(0, 5);
  ASSERT_EQ(pipeline.filter->GetPin(0)->NewSegment(0, 1000000000, 1.0), S_OK);
  EXPECT_EQ(Borders(5, 5), kThreeThenNone);
}

TEST_F(EconomicTest, AfterNewOutputType) {
  ASSERT_EQ(pipeline.Start(), S_OK);
  Borders(0, 5);
  pipeline.sink->InPin()->own_->SetPendingType(pipeline.sink->InPin()->CurrentMediaType());
  EXPECT_EQ(Borders(5, 5), kThreeThenNone);
}

TEST(VideoFilterEconomicTest, OffWritesBordersOnEveryFrame) {
  FilterPipeline pipeline(WithBorders(false), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Start(), S_OK);
  for (int i = 0; i < 6; ++i) {
    ASSERT_EQ(pipeline.source->Pin()->Push(At(i)), S_OK);
    EXPECT_TRUE(LeftBorderIsBlack(pipeline.sink->frames.back())) << i;
  }
}

}  // namespace
}  // namespace korvalin::testing
