// The sink bins: plain sinks of rank NONE, picked by playbin once their rank is raised, and
// never choosing themselves as their real sink.
#include "gst/sink_bins.h"

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "gst_test_support.h"

namespace korvalin::testing {
namespace {

constexpr const char* kBins[] = {"korvalinvideosink", "korvalinaudiosink"};

std::string FactoryName(GstElement* element) {
  GstElementFactory* factory = gst_element_get_factory(element);
  return factory ? GST_OBJECT_NAME(factory) : "";
}

// Our bins at a rank above every real sink for the scope, as GST_PLUGIN_FEATURE_RANK puts them.
struct RaisedBins {
  RaisedBins() { SetRanks(GST_RANK_PRIMARY + 1000); }
  ~RaisedBins() { SetRanks(GST_RANK_NONE); }
  static void SetRanks(guint rank) {
    for (const char* name : kBins) {
      GstElementFactory* factory = gst_element_factory_find(name);
      gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(factory), rank);
      gst_object_unref(factory);
    }
  }
};

class SinkBinsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StartGStreamer();
    for (const char* element : {"korvalin", "korvalinaudio"}) {
      GstElementFactory* factory = gst_element_factory_find(element);
      if (factory == nullptr) GTEST_SKIP() << element << " is not registered";
      gst_object_unref(factory);
    }
  }
  StoreFolder store_;
};

TEST(SinkBinsRegistration, BothAreSinksOfTheirMediaAtRankNone) {
  StartGStreamer();
  for (const auto& [name, klass] : {std::pair{kBins[0], "Sink/Video"}, {kBins[1], "Sink/Audio"}}) {
    GstElementFactory* factory = gst_element_factory_find(name);
    ASSERT_NE(factory, nullptr) << name;
    EXPECT_EQ(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(factory)), GST_RANK_NONE);
    EXPECT_STREQ(gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS), klass);
    GstElement* bin = gst_element_factory_create(factory, nullptr);
    EXPECT_TRUE(GST_OBJECT_FLAG_IS_SET(bin, GST_ELEMENT_FLAG_SINK)) << name;
    GstPad* pad = gst_element_get_static_pad(bin, "sink");
    EXPECT_NE(pad, nullptr) << name;
    if (pad != nullptr) gst_object_unref(pad);
    gst_object_unref(bin);
    gst_object_unref(factory);
  }
}

TEST_F(SinkBinsTest, RaisedBinsChooseARealSinkNotThemselves) {
  unsetenv(gst::kInnerVideoSinkVariable);
  unsetenv(gst::kInnerAudioSinkVariable);
  const RaisedBins raised;
  for (const char* name : kBins) {
    GstElement* bin = gst_element_factory_make(name, nullptr);
    ASSERT_NE(gst_element_set_state(bin, GST_STATE_READY), GST_STATE_CHANGE_FAILURE) << name;
    std::vector<std::string> sinks;
    GstIterator* children = gst_bin_iterate_sinks(GST_BIN(bin));
    gst_iterator_foreach(
        children,
        [](const GValue* item, gpointer out) {
          static_cast<std::vector<std::string>*>(out)->push_back(
              FactoryName(GST_ELEMENT(g_value_get_object(item))));
        },
        &sinks);
    gst_iterator_free(children);
    ASSERT_EQ(sinks.size(), 1u) << name;
    EXPECT_FALSE(sinks[0].starts_with("korvalin") || sinks[0].starts_with("auto")) << sinks[0];
    gst_element_set_state(bin, GST_STATE_NULL);
    gst_object_unref(bin);
  }
}

TEST_F(SinkBinsTest, PlaybinPicksTheRaisedBinsAndPlaysThroughThem) {
  const std::string film = (store_.path() / "film.mkv").string();
  GstElement* writer = Launch(
      "videotestsrc num-buffers=10 ! video/x-raw,format=I420,width=320,height=240,"
      "framerate=25/1 ! matroskamux name=mux ! filesink location=\"" +
      film +
      "\" "
      "audiotestsrc num-buffers=10 samplesperbuffer=1920 ! audio/x-raw,format=S16LE,"
      "rate=48000,channels=2 ! mux.");
  ASSERT_TRUE(RunToEnd(writer));
  gst_object_unref(writer);

  setenv(gst::kInnerVideoSinkVariable, "fakesink", 1);
  setenv(gst::kInnerAudioSinkVariable, "fakesink", 1);
  const RaisedBins raised;
  GstElement* playbin = gst_element_factory_make("playbin", nullptr);
  gchar* uri = gst_filename_to_uri(film.c_str(), nullptr);
  g_object_set(playbin, "uri", uri, nullptr);
  g_free(uri);
  std::set<std::string> added;  // "parent factory/child factory"
  g_signal_connect(playbin, "deep-element-added",
                   G_CALLBACK(+[](GstBin*, GstBin* parent, GstElement* child, gpointer out) {
                     static_cast<std::set<std::string>*>(out)->insert(
                         FactoryName(GST_ELEMENT(parent)) + "/" + FactoryName(child));
                   }),
                   &added);
  EXPECT_TRUE(RunToEnd(playbin));
  gst_object_unref(playbin);
  unsetenv(gst::kInnerVideoSinkVariable);
  unsetenv(gst::kInnerAudioSinkVariable);
  for (const char* expected : {"korvalinvideosink/korvalin", "korvalinvideosink/fakesink",
                               "korvalinaudiosink/korvalinaudio", "korvalinaudiosink/fakesink"})
    EXPECT_TRUE(added.contains(expected)) << expected;
}

}  // namespace
}  // namespace korvalin::testing
