// The arithmetic of a film played faster: times both ways, segments, seeks, query answers
// and the raised sample rate.
#include "gst/time_scale.h"

#include <gtest/gtest.h>

#include <limits>

#include "gst_test_support.h"

namespace korvalin::gst {
namespace {

constexpr int32_t k24Fps = 416666;
constexpr GstClockTime kSourceFrame = 41'666'600;  // one 24 fps frame: 416666 x 100 ns
constexpr GstClockTime kLargest = GST_CLOCK_TIME_NONE - 1;

class TimeScaleTest : public ::testing::Test {
 protected:
  void SetUp() override { testing::StartGStreamer(); }
  const TimeScale scale_{k24Fps};
};

TEST_F(TimeScaleTest, ScalesTimesBothWays) {
  EXPECT_EQ(scale_.ToOutput(250 * kSourceFrame), 10 * GST_SECOND);            // 10.41665 s of film
  EXPECT_EQ(scale_.ToOutput(kSourceFrame - 1), 40 * GST_MSECOND - 1);         // rounds down
  EXPECT_EQ(scale_.ToSource(60 * GST_SECOND), GstClockTime{62'499'900'000});  // ~62.5 s
  EXPECT_EQ(scale_.ToOutputSigned(-int64_t{kSourceFrame}), -40 * GST_MSECOND);
  EXPECT_EQ(scale_.ToSourceSigned(-1), -1);
  EXPECT_EQ(scale_.ToOutput(GST_CLOCK_TIME_NONE), GST_CLOCK_TIME_NONE);
  EXPECT_EQ(scale_.ToSource(GST_CLOCK_TIME_NONE), GST_CLOCK_TIME_NONE);
  // 416666 x 10^13 ns times 400000 does not fit in 64 bits; too large a source time
  // saturates and stays a valid time.
  EXPECT_EQ(scale_.ToOutput(GstClockTime{416666} * 10'000'000'000'000),
            GstClockTime{400000} * 10'000'000'000'000);
  EXPECT_EQ(scale_.ToSource(kLargest), kLargest);
  EXPECT_GT(scale_.ToSourceSigned(std::numeric_limits<int64_t>::max()), 0);
  for (int32_t rate : {0, -416666, 400000})
    EXPECT_EQ(TimeScale(rate).ToOutput(kSourceFrame), kSourceFrame) << rate;
}

TEST_F(TimeScaleTest, ScalesEveryTimeOfATimeSegmentOnly) {
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  segment.start = segment.time = segment.position = 250 * kSourceFrame;
  segment.base = 50 * kSourceFrame;
  segment.offset = 25 * kSourceFrame;
  scale_.ScaleSegment(&segment);
  EXPECT_EQ(segment.start, 10 * GST_SECOND);
  EXPECT_EQ(segment.time, 10 * GST_SECOND);
  EXPECT_EQ(segment.position, 10 * GST_SECOND);
  EXPECT_EQ(segment.base, 2 * GST_SECOND);
  EXPECT_EQ(segment.offset, GST_SECOND);
  EXPECT_EQ(segment.stop, GST_CLOCK_TIME_NONE);
  EXPECT_EQ(segment.duration, GST_CLOCK_TIME_NONE);

  gst_segment_init(&segment, GST_FORMAT_BYTES);
  segment.start = 1000;
  scale_.ScaleSegment(&segment);
  EXPECT_EQ(segment.start, 1000u);
}

TEST_F(TimeScaleTest, TurnsASeekBackToSourceTime) {
  const auto flags = GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
  GstEvent* seek = gst_event_new_seek(1.5, GST_FORMAT_TIME, flags, GST_SEEK_TYPE_SET,
                                      60 * GST_SECOND, GST_SEEK_TYPE_NONE, -1);
  GstEvent* source = scale_.SeekToSource(seek);
  gdouble rate;
  GstSeekFlags sourceFlags;
  GstSeekType startType, stopType;
  gint64 start, stop;
  gst_event_parse_seek(source, &rate, nullptr, &sourceFlags, &startType, &start, &stopType, &stop);
  EXPECT_EQ(rate, 1.5);
  EXPECT_EQ(sourceFlags, flags);
  EXPECT_EQ(startType, GST_SEEK_TYPE_SET);
  EXPECT_EQ(start, 62'499'900'000);
  EXPECT_EQ(stopType, GST_SEEK_TYPE_NONE);
  EXPECT_EQ(stop, -1);
  EXPECT_EQ(gst_event_get_seqnum(source), gst_event_get_seqnum(seek));
  gst_event_unref(source);
  gst_event_unref(seek);

  GstEvent* bytes = gst_event_new_seek(1.0, GST_FORMAT_BYTES, flags, GST_SEEK_TYPE_SET, 100,
                                       GST_SEEK_TYPE_NONE, -1);
  GstEvent* same = scale_.SeekToSource(bytes);
  EXPECT_EQ(same, bytes);
  gst_event_unref(same);
  gst_event_unref(bytes);
}

TEST_F(TimeScaleTest, AnswersQueriesInOutputTime) {
  // A two-hour film at 24 fps lasts 96% of that at 25.
  GstQuery* duration = gst_query_new_duration(GST_FORMAT_TIME);
  gst_query_set_duration(duration, GST_FORMAT_TIME, 172800 * kSourceFrame);
  scale_.AnswerToOutput(duration);
  gint64 value;
  gst_query_parse_duration(duration, nullptr, &value);
  EXPECT_EQ(value, 6912 * GST_SECOND);
  gst_query_unref(duration);

  // Time to samples: asked in source time, the samples stay samples.
  GstQuery* convert = gst_query_new_convert(GST_FORMAT_TIME, 60 * GST_SECOND, GST_FORMAT_DEFAULT);
  scale_.ConvertQueryToSource(convert);
  gst_query_parse_convert(convert, nullptr, &value, nullptr, nullptr);
  EXPECT_EQ(value, 62'499'900'000);
  gst_query_set_convert(convert, GST_FORMAT_TIME, value, GST_FORMAT_DEFAULT, 2'999'995);
  scale_.AnswerToOutput(convert);
  gint64 samples;
  gst_query_parse_convert(convert, nullptr, &value, nullptr, &samples);
  EXPECT_EQ(value, 60 * GST_SECOND);
  EXPECT_EQ(samples, 2'999'995);
  gst_query_unref(convert);
}

TEST_F(TimeScaleTest, RaisedSampleRateTable) {
  constexpr uint32_t kMax = std::numeric_limits<uint32_t>::max();
  const struct {
    uint32_t sampleRate;
    int32_t frameRate;
    uint32_t raised;
  } cases[] = {{48000, 416666, 49999},
               {44100, 416666, 45937},
               {22050, 417083, 22991},
               {48000, 400000, 48000},
               {48000, 0, 48000},
               {48000, -1, 48000},
               {kMax, std::numeric_limits<int32_t>::max(), kMax}};
  for (const auto& c : cases)
    EXPECT_EQ(RaisedSampleRate(c.sampleRate, c.frameRate), c.raised)
        << c.sampleRate << "@" << c.frameRate;
}

}  // namespace
}  // namespace korvalin::gst
