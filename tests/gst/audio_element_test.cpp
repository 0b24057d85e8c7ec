// `korvalinaudio` and the speed-up it learns from the pipeline: raised rates, scaled times,
// samples left alone, negotiation in real pipelines, and the bounded wait for the decision.
#include <gst/check/gstharness.h>

#include <chrono>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "gst/pipeline_rate.h"
#include "gst_test_support.h"

namespace korvalin::testing {
namespace {

using namespace std::chrono_literals;

constexpr int32_t k24Fps = 416666;
constexpr GstClockTime kSourceFrame = 41'666'600;  // one 24 fps frame
constexpr char kStereo48k[] = "audio/x-raw,format=S16LE,layout=interleaved,channels=2,rate=48000";

int RateOf(GstCaps* caps) {
  int rate = 0;
  if (caps != nullptr) gst_structure_get_int(gst_caps_get_structure(caps, 0), "rate", &rate);
  if (caps != nullptr) gst_caps_unref(caps);
  return rate;
}

// A pipeline holding the element and a stand-in for the video element, which publishes
// the decision as the real one would.
class AudioElementTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StartGStreamer();
    pipeline_ = gst_pipeline_new(nullptr);
    audio_ = gst_element_factory_make("korvalinaudio", nullptr);
    video_ = gst_element_factory_make("identity", nullptr);
    ASSERT_NE(audio_, nullptr);
    gst_bin_add_many(GST_BIN(pipeline_), audio_, video_, nullptr);
  }
  void TearDown() override {
    if (harness_ != nullptr) gst_harness_teardown(harness_);
    gst_object_unref(pipeline_);
  }

  void PlayFaster() {
    gst::ExpectVideoRate(video_);
    gst::PublishVideoRate(video_, k24Fps);
  }

  // The element under a harness, given 48 kHz stereo and a segment of the film.
  GstHarness* Start() {
    harness_ = gst_harness_new_with_element(audio_, "sink", "src");
    gst_harness_set_src_caps_str(harness_, kStereo48k);
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = segment.time = 250 * kSourceFrame;
    segment.base = 50 * kSourceFrame;
    EXPECT_TRUE(gst_harness_push_event(harness_, gst_event_new_segment(&segment)));
    return harness_;
  }

  // Pushes one source frame's samples at 250 frames; checks that the very memory comes out,
  // unchanged, and returns the output buffer.
  GstBuffer* PushSamples() {
    std::vector<uint8_t> samples(2000 * 4);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = uint8_t(i * 7);
    GstBuffer* in = gst_buffer_new_memdup(samples.data(), samples.size());
    GST_BUFFER_PTS(in) = 250 * kSourceFrame;
    GST_BUFFER_DURATION(in) = kSourceFrame;
    const GstMemory* sent = gst_buffer_peek_memory(in, 0);
    EXPECT_EQ(gst_harness_push(harness_, in), GST_FLOW_OK);
    GstBuffer* out = gst_harness_pull(harness_);
    EXPECT_EQ(gst_buffer_peek_memory(out, 0), sent);
    EXPECT_EQ(gst_buffer_get_size(out), samples.size());
    EXPECT_EQ(gst_buffer_memcmp(out, 0, samples.data(), samples.size()), 0);
    return out;
  }

  // The last segment that came out.
  GstSegment LastSegment() {
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_UNDEFINED);
    while (GstEvent* event = gst_harness_try_pull_event(harness_)) {
      if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) gst_event_copy_segment(event, &segment);
      gst_event_unref(event);
    }
    return segment;
  }

  GstElement* pipeline_ = nullptr;
  GstElement* audio_ = nullptr;
  GstElement* video_ = nullptr;
  GstHarness* harness_ = nullptr;
};

TEST_F(AudioElementTest, DeclaresTheSameSamplesAtTheRaisedRateAndTimes) {
  PlayFaster();
  GstHarness* h = Start();
  EXPECT_EQ(RateOf(gst_pad_get_current_caps(h->sinkpad)), 49999);
  GstBuffer* out = PushSamples();
  EXPECT_EQ(GST_BUFFER_PTS(out), 10 * GST_SECOND);
  EXPECT_EQ(GST_BUFFER_DURATION(out), 40 * GST_MSECOND);
  gst_buffer_unref(out);
  const GstSegment segment = LastSegment();
  EXPECT_EQ(segment.start, 10 * GST_SECOND);
  EXPECT_EQ(segment.time, 10 * GST_SECOND);
  EXPECT_EQ(segment.base, 2 * GST_SECOND);

  // A seek from downstream goes upstream in source time (after a reconfigure event).
  gst_harness_push_upstream_event(
      h, gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET,
                            60 * GST_SECOND, GST_SEEK_TYPE_NONE, -1));
  GstEvent* seek = gst_harness_pull_upstream_event(h);
  while (seek != nullptr && GST_EVENT_TYPE(seek) != GST_EVENT_SEEK)
    gst_event_unref(std::exchange(seek, gst_harness_pull_upstream_event(h)));
  ASSERT_NE(seek, nullptr);
  gint64 start;
  gst_event_parse_seek(seek, nullptr, nullptr, nullptr, nullptr, &start, nullptr, nullptr);
  EXPECT_EQ(start, 62'499'900'000);
  gst_event_unref(seek);

  // The duration upstream knows, two hours of film at 24 fps, comes back at 96%.
  gst_pad_add_probe(
      h->srcpad, GST_PAD_PROBE_TYPE_QUERY_UPSTREAM,
      [](GstPad*, GstPadProbeInfo* info, gpointer) {
        GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
        if (GST_QUERY_TYPE(query) != GST_QUERY_DURATION) return GST_PAD_PROBE_OK;
        gst_query_set_duration(query, GST_FORMAT_TIME, 172800 * kSourceFrame);
        return GST_PAD_PROBE_HANDLED;
      },
      nullptr, nullptr);
  gint64 duration = 0;
  EXPECT_TRUE(gst_pad_peer_query_duration(h->sinkpad, GST_FORMAT_TIME, &duration));
  EXPECT_EQ(duration, 6912 * GST_SECOND);
}

TEST_F(AudioElementTest, PassesThroughUntouchedWithoutAVideoElement) {
  GstHarness* h = Start();
  EXPECT_EQ(RateOf(gst_pad_get_current_caps(h->sinkpad)), 48000);
  GstBuffer* out = PushSamples();
  EXPECT_EQ(GST_BUFFER_PTS(out), 250 * kSourceFrame);
  EXPECT_EQ(GST_BUFFER_DURATION(out), kSourceFrame);
  gst_buffer_unref(out);
  const GstSegment segment = LastSegment();
  EXPECT_EQ(segment.start, 250 * kSourceFrame);
  EXPECT_EQ(segment.base, 50 * kSourceFrame);
}

// Real pipelines: the rate reaching the sink and the element, with converters on either side
// or none, and a sink that insists on a rate, which the element turns back into the source
// rate, even when the video decides only as the first caps are offered, after every query.
TEST_F(AudioElementTest, NegotiatesInRealPipelines) {
  enum class Video { kNoSpeedUp, kFaster, kFasterLate };
  struct Case {
    const char* around;  // "!"-separated, with the element at "KA"
    Video video;
    int sinkRate;
    int elementRate;
  };
  const Case cases[] = {
      {"audiotestsrc ! KA ! fakesink", Video::kNoSpeedUp, 44100, 44100},
      {"audiotestsrc ! KA ! fakesink", Video::kFaster, 45937, 44100},
      {"audiotestsrc ! audioconvert ! audioresample ! KA ! audioconvert ! audioresample ! fakesink",
       Video::kFaster, 45937, 44100},
      {"audiotestsrc ! audioresample ! KA ! audio/x-raw,rate=49999 ! fakesink", Video::kFaster,
       49999, 48000},
      {"audiotestsrc ! audioresample ! KA ! audio/x-raw,rate=49999 ! fakesink", Video::kFasterLate,
       49999, 48000},
  };
  for (const Case& c : cases) {
    std::string line = c.around;
    line.replace(line.find("KA"), 2, "korvalinaudio name=audio");
    GstElement* pipeline = Launch(line + " name=sink");
    ASSERT_NE(pipeline, nullptr);
    GstElement* video = gst_element_factory_make("identity", nullptr);
    gst_bin_add(GST_BIN(pipeline), video);
    gst::ExpectVideoRate(video);
    if (c.video != Video::kFasterLate)
      gst::PublishVideoRate(video, c.video == Video::kFaster ? k24Fps : 0);
    GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
    GstElement* audio = gst_bin_get_by_name(GST_BIN(pipeline), "audio");
    GstPad* sinkPad = gst_element_get_static_pad(sink, "sink");
    GstPad* audioPad = gst_element_get_static_pad(audio, "sink");
    if (c.video == Video::kFasterLate)
      gst_pad_add_probe(
          audioPad, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM,
          [](GstPad*, GstPadProbeInfo* info, gpointer video) {
            if (GST_QUERY_TYPE(GST_PAD_PROBE_INFO_QUERY(info)) == GST_QUERY_ACCEPT_CAPS)
              gst::PublishVideoRate(static_cast<GstElement*>(video), k24Fps);
            return GST_PAD_PROBE_OK;
          },
          video, nullptr);

    gst_element_set_state(pipeline, GST_STATE_PAUSED);
    EXPECT_EQ(gst_element_get_state(pipeline, nullptr, nullptr, 10 * GST_SECOND),
              GST_STATE_CHANGE_SUCCESS)
        << line;
    EXPECT_EQ(RateOf(gst_pad_get_current_caps(sinkPad)), c.sinkRate) << line;
    EXPECT_EQ(RateOf(gst_pad_get_current_caps(audioPad)), c.elementRate) << line;
    gst_element_set_state(pipeline, GST_STATE_NULL);
    for (gpointer object : {gpointer(audioPad), gpointer(sinkPad), gpointer(audio), gpointer(sink),
                            gpointer(pipeline)})
      gst_object_unref(object);
  }
}

using PipelineRateTest = AudioElementTest;

TEST_F(PipelineRateTest, WaitsAtMostTheLimitForAnUndecidedVideo) {
  gst::ExpectVideoRate(video_);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(gst::AwaitVideoRate(audio_, 50ms), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 50ms);
}

TEST_F(PipelineRateTest, PublishingOrWithdrawingWakesTheWaitingAudio) {
  for (bool publish : {true, false}) {
    gst::ExpectVideoRate(video_);
    auto waiting =
        std::async(std::launch::async, [this] { return gst::AwaitVideoRate(audio_, 1h); });
    if (publish)
      gst::PublishVideoRate(video_, k24Fps);
    else
      gst::WithdrawVideoRate(video_);
    ASSERT_EQ(waiting.wait_for(60s), std::future_status::ready) << publish;
    EXPECT_EQ(waiting.get(), publish ? k24Fps : 0);
    gst::WithdrawVideoRate(video_);
  }
}

TEST_F(PipelineRateTest, SharesTheDecisionWithinOnePipelineOnly) {
  // The audio sits in a bin of the pipeline, as in a sink bin.
  GstElement* bin = gst_bin_new(nullptr);
  GstElement* nested = gst_element_factory_make("korvalinaudio", nullptr);
  gst_bin_add(GST_BIN(bin), nested);
  gst_bin_add(GST_BIN(pipeline_), bin);
  GstElement* other = gst_pipeline_new(nullptr);
  GstElement* otherVideo = gst_element_factory_make("identity", nullptr);
  gst_bin_add(GST_BIN(other), otherVideo);

  gst::PublishVideoRate(otherVideo, 417083);
  EXPECT_EQ(gst::AwaitVideoRate(nested, 1h), 0);  // no video here: at once
  PlayFaster();
  EXPECT_EQ(gst::AwaitVideoRate(nested, 1h), k24Fps);
  gst::WithdrawVideoRate(video_);
  EXPECT_EQ(gst::AwaitVideoRate(nested, 1h), 0);
  gst_object_unref(other);
}

}  // namespace
}  // namespace korvalin::testing
