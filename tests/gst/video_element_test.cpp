// The `korvalin` element in GStreamer: caps negotiation, pixels equal to the batch tool's,
// pass-through by load mode, the 25 fps time scaling and subtitles found through playbin.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <array>
#include <cstdio>
#include <regex>

#include "filter/y4m_stream.h"
#include "gst/filter_session.h"
#include "gst/video_element.h"
#include "gst_test_support.h"

namespace korvalin::testing {
namespace {

class VideoElementTest : public ::testing::Test {
 protected:
  void SetUp() override { StartGStreamer(); }
  StoreFolder store_;
};

std::string Caps(const std::string& format, int width, int height, const std::string& rate) {
  return "video/x-raw,format=" + format + ",width=" + std::to_string(width) +
         ",height=" + std::to_string(height) + ",framerate=" + rate +
         ",pixel-aspect-ratio=1/1";
}

// A YUY2 picture with a pattern that tells rows and columns apart.
std::vector<uint8_t> Pattern(int width, int height, int seed) {
  std::vector<uint8_t> yuy2(std::size_t(width) * 2 * height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width * 2; ++x)
      yuy2[std::size_t(y) * width * 2 + x] = uint8_t((x % 2) ? 128 + (y + seed) % 64 : 16 + (x + 3 * y + seed) % 200);
  return yuy2;
}

// A buffer of `yuy2` rows laid out at GStreamer's stride for the width.
GstBuffer* FrameBuffer(const std::vector<uint8_t>& yuy2, int width, int height, int index,
                       GstClockTime frame) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, GST_VIDEO_FORMAT_YUY2, width, height);
  GstBuffer* buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
  GstMapInfo map;
  gst_buffer_map(buffer, &map, GST_MAP_WRITE);
  for (int y = 0; y < height; ++y)
    std::memcpy(map.data + std::size_t(GST_VIDEO_INFO_PLANE_STRIDE(&info, 0)) * y,
                yuy2.data() + std::size_t(width) * 2 * y, std::size_t(width) * 2);
  gst_buffer_unmap(buffer, &map);
  GST_BUFFER_PTS(buffer) = frame * index;
  GST_BUFFER_DURATION(buffer) = frame;
  return buffer;
}

// The packed rows of a video buffer in the caps it went out with.
std::vector<uint8_t> PackedRows(GstBuffer* buffer, GstCaps* caps) {
  GstVideoInfo info;
  gst_video_info_from_caps(&info, caps);
  GstVideoFrame frame;
  std::vector<uint8_t> rows;
  if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) return rows;
  const int width = GST_VIDEO_FRAME_WIDTH(&frame) * GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 0);
  for (int y = 0; y < GST_VIDEO_FRAME_HEIGHT(&frame); ++y) {
    const auto* row = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)) +
                      std::size_t(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0)) * y;
    rows.insert(rows.end(), row, row + width);
  }
  gst_video_frame_unmap(&frame);
  return rows;
}

struct Negotiated {
  int width = 0, height = 0;
  std::string format;
  int rateN = 0, rateD = 1;
};

Negotiated OutputCaps(GstHarness* h) {
  GstCaps* caps = gst_pad_get_current_caps(h->sinkpad);
  Negotiated n;
  if (caps == nullptr) return n;
  const GstStructure* s = gst_caps_get_structure(caps, 0);
  gst_structure_get_int(s, "width", &n.width);
  gst_structure_get_int(s, "height", &n.height);
  gst_structure_get_fraction(s, "framerate", &n.rateN, &n.rateD);
  n.format = gst_structure_get_string(s, "format");
  gst_caps_unref(caps);
  return n;
}

// What `korvalin geometry` says the output is for an input size.
std::pair<int, int> ToolGeometry(int width, int height, bool subtitles) {
  const std::string command = std::string(KORVALIN_CLI) + " geometry " + std::to_string(width) +
                              "x" + std::to_string(height) + (subtitles ? " --subtitles" : "");
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  std::array<char, 256> chunk;
  while (std::fgets(chunk.data(), chunk.size(), pipe)) out += chunk.data();
  pclose(pipe);
  std::smatch m;
  if (!std::regex_search(out, m, std::regex("outputWidth=(\\d+) outputHeight=(\\d+)"))) return {};
  return {std::stoi(m[1]), std::stoi(m[2])};
}

TEST_F(VideoElementTest, NegotiatesTheFramedSizeInEveryFormat) {
  store_.Set("bOverscan=1 Overscan=10");
  const auto srt = store_.Write("subs.srt", "1\n00:00:00,000 --> 00:00:05,000\nHello\n");
  struct Row {
    int width, height;
    const char* format;
    bool subtitles;
  };
  for (const Row& row : {Row{720, 576, "YUY2", false}, Row{1920, 1080, "BGRx", true},
                         Row{352, 288, "RGB16", false}, Row{639, 361, "RGB16", true},
                         Row{321, 240, "BGRx", false}}) {
    SCOPED_TRACE(std::to_string(row.width) + "x" + std::to_string(row.height) + " " + row.format);
    GstHarness* h = gst_harness_new("korvalin");
    if (row.subtitles) g_object_set(h->element, "subtitle-file", srt.c_str(), nullptr);
    gst_harness_set_src_caps_str(h, Caps("YUY2", row.width, row.height, "25/1").c_str());
    gst_harness_set_sink_caps_str(h, (std::string("video/x-raw,format=") + row.format).c_str());
    GstBuffer* out = gst_harness_push_and_pull(
        h, FrameBuffer(Pattern(row.width, row.height, 0), row.width, row.height, 0, GST_SECOND / 25));
    ASSERT_NE(out, nullptr);
    const Negotiated n = OutputCaps(h);
    const auto [width, height] = ToolGeometry(row.width, row.height, row.subtitles);
    EXPECT_EQ(n.format, row.format);
    EXPECT_EQ(n.width, width);
    EXPECT_EQ(n.height, height);
    GstVideoInfo info;
    gst_video_info_set_format(&info, gst_video_format_from_string(row.format), width, height);
    EXPECT_EQ(gst_buffer_get_size(out), GST_VIDEO_INFO_SIZE(&info));
    gst_buffer_unref(out);
    gst_harness_teardown(h);
  }
}

TEST_F(VideoElementTest, FramesPixelForPixelAsTheBatchTool) {
  store_.Set("bOverscan=1 Overscan=6 Flip=2");
  const int width = 320, height = 240, frames = 6;
  const auto film = store_.path() / "film.y4m";
  store_.Write("film.srt", "1\n00:00:00,040 --> 00:00:00,160\nBeside the film\n");
  std::vector<std::vector<uint8_t>> pictures;
  {
    std::FILE* file = std::fopen(film.c_str(), "wb");
    Y4mWriter writer(file);
    writer.WriteHeader(width, height, 25, 1);
    for (int i = 0; i < frames; ++i) writer.WriteFrame(pictures.emplace_back(Pattern(width, height, i)));
    std::fclose(file);
  }
  const auto rendered = store_.path() / "out.y4m";
  const std::string command = std::string(KORVALIN_CLI) + " render " + film.string() + " -o " +
                              rendered.string() + " --format yuy2";
  ASSERT_EQ(std::system(command.c_str()), 0);

  GstHarness* h = gst_harness_new("korvalin");
  g_object_set(h->element, "subtitle-file", (store_.path() / "film.srt").c_str(), nullptr);
  gst_harness_set_src_caps_str(h, Caps("YUY2", width, height, "25/1").c_str());
  gst_harness_set_sink_caps_str(h, "video/x-raw,format=YUY2");
  std::FILE* file = std::fopen(rendered.c_str(), "rb");
  Y4mReader reader(file);
  ASSERT_EQ(reader.ReadHeader(), "");
  for (int i = 0; i < frames; ++i) {
    GstBuffer* out = gst_harness_push_and_pull(h, FrameBuffer(pictures[i], width, height, i, GST_SECOND / 25));
    GstCaps* caps = gst_pad_get_current_caps(h->sinkpad);
    std::vector<uint8_t> expected;
    ASSERT_EQ(reader.ReadFrame(&expected), 1);
    EXPECT_TRUE(PackedRows(out, caps) == expected) << "frame " << i;
    gst_caps_unref(caps);
    gst_buffer_unref(out);
  }
  std::fclose(file);
  gst_harness_teardown(h);
}

TEST_F(VideoElementTest, PaddedStridesGiveThePackedPicture) {
  // 319 pixels: GStreamer pads YUY2 and RGB16 rows to four bytes, the filter packs them.
  store_.Set("bOverscan=1 Overscan=4");
  const int width = 319, height = 200;
  const std::vector<uint8_t> picture = Pattern(width, height, 7);
  GstHarness* h = gst_harness_new("korvalin");
  gst_harness_set_src_caps_str(h, Caps("YUY2", width, height, "25/1").c_str());
  gst_harness_set_sink_caps_str(h, "video/x-raw,format=RGB16");
  GstBuffer* out = gst_harness_push_and_pull(h, FrameBuffer(picture, width, height, 0, GST_SECOND / 25));
  GstCaps* caps = gst_pad_get_current_caps(h->sinkpad);
  const std::vector<uint8_t> rows = PackedRows(out, caps);

  gst::FilterSession session;
  gst::FilmFormat format{width, height, 25, 1, 1, 1};
  ASSERT_TRUE(session.Connect(format, "", 0));
  ASSERT_TRUE(session.SelectOutput(PixelFormat::RGB565));
  const gst::OutputShape shape = session.Output();
  std::vector<uint8_t> expected(std::size_t(shape.width) * 2 * shape.height);
  gst::FrameIn in{picture.data(), picture.size(), true, 0, 400000};
  ASSERT_EQ(session.Transform(in, expected.data(), expected.size()), gst::FrameResult::kWritten);
  EXPECT_TRUE(rows == expected);
  gst_caps_unref(caps);
  gst_buffer_unref(out);
  gst_harness_teardown(h);
}

TEST_F(VideoElementTest, PassesFramesThroughWhenTheLoadModeSaysSo) {
  struct Row {
    const char* settings;
    bool framed;
  };
  // 640 pixels: a width the renderer takes as it is, so "Only if necessary" has nothing to do.
  for (const Row& row : {Row{"LoadMode=1", false}, Row{"LoadMode=2", false},
                         Row{"LoadMode=2 Flip=1", true}, Row{"LoadMode=0", true}}) {
    SCOPED_TRACE(row.settings);
    store_.Set(row.settings);
    GstHarness* h = gst_harness_new("korvalin");
    gst_harness_set_src_caps_str(h, Caps("YUY2", 640, 480, "25/1").c_str());
    GstBuffer* in = FrameBuffer(Pattern(640, 480, 1), 640, 480, 0, GST_SECOND / 25);
    gst_buffer_ref(in);
    GstBuffer* out = gst_harness_push_and_pull(h, in);
    EXPECT_EQ(out != in, row.framed);
    EXPECT_EQ(OutputCaps(h).format, "YUY2");
    gst_buffer_unref(in);
    gst_buffer_unref(out);
    gst_harness_teardown(h);
  }
}

TEST_F(VideoElementTest, PlaysA24FpsFilmAt25) {
  store_.Set("FPSConv=3");
  GstHarness* h = gst_harness_new("korvalin");
  gst_harness_set_src_caps_str(h, Caps("YUY2", 320, 240, "24/1").c_str());
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  segment.base = 24 * GST_SECOND;
  gst_harness_push_event(h, gst_event_new_segment(&segment));
  // Frame 250 of a 24 fps film starts at 10.4166 s: at 25 fps it is shown at 10.0 s.
  GstBuffer* out = gst_harness_push_and_pull(
      h, FrameBuffer(Pattern(320, 240, 0), 320, 240, 250, GST_SECOND / 24));
  EXPECT_NEAR(double(GST_BUFFER_PTS(out)) / GST_SECOND, 10.0, 1e-6);
  EXPECT_NEAR(double(GST_BUFFER_DURATION(out)) / GST_SECOND, 0.04, 1e-6);
  const Negotiated n = OutputCaps(h);
  EXPECT_EQ(n.rateN, 25);
  EXPECT_EQ(n.rateD, 1);
  gst_buffer_unref(out);

  double base = -1;  // of the last segment
  while (GstEvent* event = gst_harness_try_pull_event(h)) {
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
      const GstSegment* scaled = nullptr;
      gst_event_parse_segment(event, &scaled);
      base = double(scaled->base) / GST_SECOND;
    }
    gst_event_unref(event);
  }
  EXPECT_NEAR(base, 24 * 0.96, 1e-9);  // 24 fps plays at exactly 25

  gst_harness_push_upstream_event(
      h, gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET,
                            60 * GST_SECOND, GST_SEEK_TYPE_NONE, 0));
  GstEvent* seek = nullptr;
  while ((seek = gst_harness_try_pull_upstream_event(h)) && GST_EVENT_TYPE(seek) != GST_EVENT_SEEK)
    gst_event_unref(seek);
  ASSERT_NE(seek, nullptr);
  gint64 start = 0;
  gst_event_parse_seek(seek, nullptr, nullptr, nullptr, nullptr, &start, nullptr, nullptr);
  EXPECT_NEAR(double(start) / GST_SECOND, 62.5, 1e-8);  // the source frame at 62.5 s
  gst_event_unref(seek);
  gst_harness_teardown(h);
}

TEST_F(VideoElementTest, ReportsTheDurationOfTheFasterFilm) {
  store_.Set("FPSConv=3");
  GstElement* pipeline = Launch(
      "appsrc name=src format=time is-live=false caps=\"" + Caps("YUY2", 64, 48, "24/1") +
      "\" ! korvalin ! fakesink");
  GstElement* src = gst_bin_get_by_name(GST_BIN(pipeline), "src");
  g_object_set(src, "duration", guint64(100 * GST_SECOND), nullptr);
  GstBuffer* frame = FrameBuffer(Pattern(64, 48, 0), 64, 48, 0, GST_SECOND / 24);
  GstFlowReturn pushed;
  g_signal_emit_by_name(src, "push-buffer", frame, &pushed);
  gst_buffer_unref(frame);
  gst_element_set_state(pipeline, GST_STATE_PAUSED);
  gst_element_get_state(pipeline, nullptr, nullptr, 10 * GST_SECOND);
  gint64 duration = 0;
  EXPECT_TRUE(gst_element_query_duration(pipeline, GST_FORMAT_TIME, &duration));
  EXPECT_NEAR(double(duration) / GST_SECOND, 96.0, 1e-3);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(src);
  gst_object_unref(pipeline);
}

TEST_F(VideoElementTest, FindsTheSubtitlesBesideAFilmInPlaybin) {
  const auto film = store_.path() / "film.mkv";
  GstElement* maker = Launch(
      "videotestsrc num-buffers=30 ! video/x-raw,format=I420,width=320,height=240,framerate=25/1"
      " ! matroskamux ! filesink location=" + film.string());
  ASSERT_TRUE(RunToEnd(maker));
  gst_object_unref(maker);
  const auto srt = store_.Write("film.srt", "1\n00:00:00,000 --> 00:00:01,000\nFound\n");

  GstElement* playbin = gst_element_factory_make("playbin", nullptr);
  GError* error = nullptr;
  GstElement* filter = gst_parse_bin_from_description("videoconvert ! korvalin name=k ! videoconvert", TRUE, &error);
  ASSERT_EQ(error, nullptr);
  gchar* uri = gst_filename_to_uri(film.c_str(), nullptr);
  g_object_set(playbin, "uri", uri, "video-filter", filter, "video-sink",
               gst_element_factory_make("fakesink", nullptr), "audio-sink",
               gst_element_factory_make("fakesink", nullptr), nullptr);
  g_free(uri);
  std::string announced;
  EXPECT_TRUE(RunToEnd(playbin, [&](const GstStructure* s) {
    if (gst_structure_has_name(s, gst::kSubtitlesLoadedMessage))
      announced = gst_structure_get_string(s, "file");
  }));
  EXPECT_EQ(announced, srt.string());
  GstElement* element = gst_bin_get_by_name(GST_BIN(filter), "k");
  gchar* loaded = nullptr;
  g_object_get(element, "subtitle-file", &loaded, nullptr);
  EXPECT_STREQ(loaded, srt.c_str());
  g_free(loaded);
  gst_object_unref(element);
  gst_object_unref(playbin);
}

}  // namespace
}  // namespace korvalin::testing

namespace korvalin::testing {
namespace {

// A GTK 4 player aborts when GTK 3 comes in, and a Qt application cannot live inside it:
// nothing the plugin loads may bring a GUI toolkit into the player's process.
TEST(GstPlugin, LoadsNoGuiToolkitIntoThePlayer) {
  const std::string command =
      std::string("ldd ") + KORVALIN_GST_PLUGIN_DIR + "/libgstkorvalin.so 2>&1";
  std::FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string libraries;
  std::array<char, 512> line;
  while (std::fgets(line.data(), line.size(), pipe)) libraries += line.data();
  pclose(pipe);
  ASSERT_NE(libraries.find("libgstreamer-1.0"), std::string::npos) << libraries;
  EXPECT_FALSE(std::regex_search(libraries, std::regex("libgtk|libgdk|libQt|libX11|libwayland")))
      << libraries;
}

}  // namespace
}  // namespace korvalin::testing

namespace korvalin::testing {
namespace {

void MakeFilm(const std::filesystem::path& film, int frames) {
  GstElement* maker = Launch("videotestsrc num-buffers=" + std::to_string(frames) +
                             " ! video/x-raw,format=I420,width=160,height=120,framerate=25/1"
                             " ! matroskamux ! filesink location=" + film.string());
  ASSERT_TRUE(RunToEnd(maker));
  gst_object_unref(maker);
}

TEST_F(VideoElementTest, LoadsEachFilmsSubtitlesInGaplessPlayback) {
  const auto first = store_.path() / "first.mkv", second = store_.path() / "second.mkv";
  MakeFilm(first, 10);
  MakeFilm(second, 10);
  store_.Write("first.srt", "1\n00:00:00,000 --> 00:00:01,000\nOne\n");
  store_.Write("second.srt", "1\n00:00:00,000 --> 00:00:01,000\nTwo\n");

  GstElement* playbin = gst_element_factory_make("playbin", nullptr);
  gchar* uri = gst_filename_to_uri(first.c_str(), nullptr);
  gchar* next = gst_filename_to_uri(second.c_str(), nullptr);
  g_object_set(playbin, "uri", uri, "video-filter", gst_element_factory_make("korvalin", nullptr),
               "video-sink", gst_element_factory_make("fakesink", nullptr), nullptr);
  // The second film follows the first; nothing follows the second.
  g_signal_connect(playbin, "about-to-finish", G_CALLBACK(+[](GstElement* p, gchar** nextUri) {
                     if (*nextUri != nullptr) g_object_set(p, "uri", *nextUri, nullptr);
                     g_free(std::exchange(*nextUri, nullptr));
                   }), &next);
  std::vector<std::string> loaded;
  EXPECT_TRUE(RunToEnd(playbin, [&](const GstStructure* s) {
    if (gst_structure_has_name(s, gst::kSubtitlesLoadedMessage))
      loaded.push_back(std::filesystem::path(gst_structure_get_string(s, "file")).filename());
  }));
  ASSERT_FALSE(loaded.empty());
  EXPECT_EQ(loaded.front(), "first.srt");
  EXPECT_EQ(loaded.back(), "second.srt");
  g_free(uri);
  g_free(next);
  gst_object_unref(playbin);
}

}  // namespace
}  // namespace korvalin::testing

namespace korvalin::testing {
namespace {

// GStreamer's converters read BGRx's fourth byte as alpha: picture, borders and subtitles
// must all be opaque, or a player shows the film see-through.
TEST_F(VideoElementTest, WritesOpaqueBgrx) {
  store_.Set("bOverscan=1 Overscan=10");
  const auto srt = store_.Write("subs.srt", "1\n00:00:00,000 --> 00:00:05,000\nOpaque\n");
  GstHarness* h = gst_harness_new("korvalin");
  g_object_set(h->element, "subtitle-file", srt.c_str(), nullptr);
  gst_harness_set_src_caps_str(h, Caps("YUY2", 320, 240, "25/1").c_str());
  gst_harness_set_sink_caps_str(h, "video/x-raw,format=BGRx");
  GstBuffer* out = gst_harness_push_and_pull(h, FrameBuffer(Pattern(320, 240, 3), 320, 240, 0, GST_SECOND / 25));
  GstCaps* caps = gst_pad_get_current_caps(h->sinkpad);
  const std::vector<uint8_t> rows = PackedRows(out, caps);
  ASSERT_FALSE(rows.empty());
  std::size_t transparent = 0;
  for (std::size_t i = 3; i < rows.size(); i += 4) transparent += rows[i] != 0xFF;
  EXPECT_EQ(transparent, 0u);
  gst_caps_unref(caps);
  gst_buffer_unref(out);
  gst_harness_teardown(h);
}

}  // namespace
}  // namespace korvalin::testing
