#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

#include "filter_harness.h"

namespace korvalin::testing {
namespace {

// A SubRip file in a private folder, removed afterwards.
class SubtitleFile {
 public:
  explicit SubtitleFile(const std::string& text) {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("korvalin-filter-" + std::to_string(random()) + ".srt");
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~SubtitleFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  const char* path() const { return path_.c_str(); }

 private:
  std::filesystem::path path_;
};

// One subtitle from 200 ms to 400 ms, one from 1000 ms to 2000 ms.
constexpr const char* kSubRip =
    "1\n00:00:00,200 --> 00:00:00,400\nHELLO\n\n"
    "2\n00:00:01,000 --> 00:00:02,000\nWORLD\n\n";

Settings Plain() {
  Settings settings{Settings::DefaultsOnly{}};
  settings.bFill2 = 0;
  return settings;
}

// Subtitle text is drawn bright over the grey picture.
bool HasOverlay(const RecordedFrame& frame) {
  for (std::size_t i = 0; i < frame.bytes.size(); i += 2) {
    if (frame.bytes[i] > 0xC0) return true;
  }
  return false;
}

PushOptions Between(REFERENCE_TIME start, REFERENCE_TIME stop) {
  PushOptions options;
  options.start = start;
  options.stop = stop;
  return options;
}

class SubtitleFrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(pipeline.Start(), S_OK);
    ASSERT_EQ(pipeline.filter->LoadSubtitles(file.path()), 0);
  }
  bool PushAndLook(PushOptions options) {
    EXPECT_EQ(pipeline.source->Pin()->Push(options), S_OK);
    return HasOverlay(pipeline.sink->frames.back());
  }
  SubtitleFile file{kSubRip};
  FilterPipeline pipeline{Plain(), Yuy2Type(320, 240)};
};

TEST_F(SubtitleFrameTest, SubtitleShowsExactlyDuringItsInterval) {
  const struct {
    int64_t startMs;
    bool shown;
  } cases[] = {{0, false},  {150, false}, {160, true}, {200, true},  {360, true},
               {400, true}, {401, false}, {990, true}, {1500, true}, {2001, false}};
  for (const auto& c : cases) {
    // A 40 ms frame shows a subtitle that overlaps any part of it.
    EXPECT_EQ(PushAndLook(Between(c.startMs * 10000, (c.startMs + 40) * 10000)), c.shown)
        << c.startMs;
  }
}

TEST_F(SubtitleFrameTest, SegmentStartIsAddedBeforeTheDivision) {
  // 9999 + 9990001 ticks is 1000 ms; each divided alone gives only 0 + 999.
  ASSERT_EQ(pipeline.filter->GetPin(0)->NewSegment(9990001, INT64_MAX, 1.0), S_OK);
  EXPECT_TRUE(PushAndLook(Between(9999, 10000)));
  ASSERT_EQ(pipeline.filter->GetPin(0)->NewSegment(0, INT64_MAX, 1.0), S_OK);
  EXPECT_FALSE(PushAndLook(Between(9999, 10000)));
}

TEST_F(SubtitleFrameTest, UntimedSampleLeavesSubtitleStatesAlone) {
  EXPECT_TRUE(PushAndLook(Between(2000000, 2400000)));
  EXPECT_EQ(pipeline.filter->lastSubtitleState, 0);
  PushOptions untimed;
  untimed.timed = false;
  EXPECT_FALSE(PushAndLook(untimed));
  EXPECT_FALSE(pipeline.sink->frames.back().timed);
  EXPECT_EQ(pipeline.filter->lastSubtitleState, 0);
}

// Economic mode with the subtitle coming, staying and going.
TEST(SubtitleEconomicTest, BorderRefreshFollowsTheSubtitle) {
  Settings settings = Plain();
  settings.Economic = 1;
  FilterPipeline pipeline(settings, Yuy2Type(320, 240));
  ASSERT_EQ(pipeline.Start(), S_OK);
  SubtitleFile file(kSubRip);
  ASSERT_EQ(pipeline.filter->LoadSubtitles(file.path()), 0);
  EXPECT_EQ(pipeline.filter->borderRefresh, 3);
  struct Step {
    int64_t startMs;
    int32_t subtitleState;
    int32_t refreshAfter;
  };
  const Step steps[] = {
      {0, -1, 2},   {40, -1, 1},  {80, -1, 0},  {120, -1, 0},  // after the load
      {200, 0, 2},  {240, 1, 1},  {280, 1, 0},  {320, 1, 0},   // comes on screen, stays
      {440, -1, 2}, {480, -1, 1}, {520, -1, 0}, {560, -1, 0},  // leaves
  };
  for (const Step& step : steps) {
    ASSERT_EQ(
        pipeline.source->Pin()->Push(Between(step.startMs * 10000, (step.startMs + 40) * 10000)),
        S_OK);
    EXPECT_EQ(pipeline.filter->lastSubtitleState, step.subtitleState) << step.startMs;
    EXPECT_EQ(pipeline.filter->borderRefresh, step.refreshAfter) << step.startMs;
  }
}

// The elapsed-time clock draws a new image each second, which restarts the refresh.
TEST(ClockEconomicTest, EachNewClockImageRestartsTheBorderRefresh) {
  Settings settings = Plain();
  settings.Economic = 1;
  settings.OSD.OSDVideoTime = 1;
  FilterPipeline pipeline(settings, Yuy2Type(320, 240));
  ASSERT_EQ(pipeline.Start(), S_OK);
  for (int frame = 0; frame < 27; ++frame) {
    const REFERENCE_TIME start = frame * kFrameTicks;
    ASSERT_EQ(pipeline.source->Pin()->Push(Between(start, start + kFrameTicks)), S_OK);
    const int32_t sinceImage = frame < 25 ? frame : frame - 25;  // 0:00:00, then 0:00:01
    EXPECT_EQ(pipeline.filter->lastClockState, sinceImage == 0 ? 0 : 1) << frame;
    EXPECT_EQ(pipeline.filter->borderRefresh, std::max(0, 2 - sinceImage)) << frame;
  }
}

TEST(OverlayChangeRuleTest, RestartsOnNewComingAndLeavingImages) {
  const struct {
    int32_t newState, lastState;
    bool refresh;
  } cases[] = {{-1, -1, false}, {0, -1, true}, {1, -1, true}, {0, 0, true}, {0, 1, true},
               {1, 0, false},   {1, 1, false}, {-1, 0, true}, {-1, 1, true}};
  for (const auto& c : cases) {
    EXPECT_EQ(OverlayChangeNeedsRefresh(c.newState, c.lastState), c.refresh)
        << c.newState << " after " << c.lastState;
  }
}

}  // namespace
}  // namespace korvalin::testing
