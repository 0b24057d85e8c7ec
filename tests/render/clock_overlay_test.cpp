#include "render/clock_overlay.h"

#include <gtest/gtest.h>

#include <string>

namespace korvalin {
namespace {

constexpr TimeOfDay kNineOhFive{9, 5};

TEST(ClockText, ComposesVideoTimeAndTimeOfDay) {
  struct Case {
    int32_t mode, world, startMs, durationMs;
    const char* text;
  };
  const Case cases[] = {
      {0, 0, 5000, 0, ""},
      {1, 0, 3723456, 0, "1:02:03"},
      {1, 0, 5000, 0, "0:00:05"},
      {1, 0, 43200000, 0, "12:00:00"},
      {1, 0, -1000, 0, "-0:00:01"},         // before the stream's start
      {2, 0, 900000, 3600000, "-0:45:00"},  // remaining
      {2, 0, 3600000, 3600000, "0:00:00"},  // at the end
      {2, 0, 3700000, 3600000, "0:00:00"},  // past the end, no sign
      {2, 0, 5000, 0, "0:00:00"},           // unknown duration
      {0, 1, 0, 0, "9:05"},                 // alone, the hour's space is trimmed
      {1, 1, 5000, 0, "0:00:05\n 9:05"},    // second line keeps it
  };
  for (const Case& c : cases) {
    EXPECT_STREQ(ClockText(c.mode, c.world, c.startMs, c.durationMs, kNineOhFive).c_str(), c.text)
        << c.mode << " " << c.world << " " << c.startMs;
  }
  EXPECT_STREQ(ClockText(0, 1, 0, 0, {23, 59}).c_str(), "23:59");
}

TEST(ClockOverlay, DrawsOnlyWhenTheTextOrTheStyleChanges) {
  TimeOfDay now = kNineOhFive;
  ClockOverlay clock([&now] { return now; });
  EXPECT_EQ(clock.UpdateClock(5000, 5040, 720), -1);  // off
  EXPECT_EQ(clock.renderer.imageWidth(), 0);

  clock.SetModes(1, 1);
  EXPECT_EQ(clock.UpdateClock(5000, 5040, 720), 0);
  EXPECT_STREQ(clock.lastText.c_str(), "0:00:05\n 9:05");
  EXPECT_GT(clock.renderer.imageHeight(), 0);
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), 1);  // same second
  now = {9, 6};
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), 0);  // the minute of the day changed
  clock.renderer.SetStyle("Arial", 0, 24, 700, 2, 0xFFFFFF, 1);
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), 0);  // a new style redraws

  clock.SetModes(0, 0);
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), -1);
  EXPECT_TRUE(clock.lastText.IsEmpty());
  EXPECT_EQ(clock.renderer.imageWidth(), 0);
}

TEST(ClockOverlay, AFailedDrawingGivesMinusOneThenTheEmptyImage) {
  TimeOfDay now = kNineOhFive;
  ClockOverlay clock([&now] { return now; });
  clock.SetModes(0, 1);
  ASSERT_EQ(clock.UpdateClock(0, 0, 720), 0);
  now = {9, 6};
  EXPECT_EQ(clock.UpdateClock(0, 0, 2), -1);  // too narrow to draw
  EXPECT_EQ(clock.UpdateClock(0, 0, 2), 1);   // the text is kept; the image stays empty
  EXPECT_EQ(clock.renderer.imageWidth(), 0);
}

}  // namespace
}  // namespace korvalin
