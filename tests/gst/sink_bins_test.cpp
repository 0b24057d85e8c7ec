// The sink bins: registered as plain sinks of rank NONE, picked by playbin once their rank is
// raised, and never choosing themselves as their real sink.
#include <gst/gst.h>

#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "gst/sink_bins.h"
#include "gst_test_support.h"

namespace korvalin::testing {
namespace {

struct BinCase {
  const char* factory;
  const char* klass;
  const char* longName;
  const char* innerVariable;
};

constexpr BinCase kBins[] = {
    {"korvalinvideosink", "Sink/Video", "Korvalin video sink", gst::kInnerVideoSinkVariable},
    {"korvalinaudiosink", "Sink/Audio", "Korvalin audio sink", gst::kInnerAudioSinkVariable},
};

// Sets (or, with null, unsets) an environment variable for the scope.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    value ? setenv(name, value, 1) : unsetenv(name);
  }
  ~ScopedVariable() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

// Our bins at rank MAX for the scope, as GST_PLUGIN_FEATURE_RANK would put them.
class RaisedBins {
 public:
  RaisedBins() { SetRanks(GST_RANK_PRIMARY + 1000); }
  ~RaisedBins() { SetRanks(GST_RANK_NONE); }

 private:
  static void SetRanks(guint rank) {
    for (const BinCase& bin : kBins) {
      GstElementFactory* factory = gst_element_factory_find(bin.factory);
      gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(factory), rank);
      gst_object_unref(factory);
    }
  }
};

bool FactoryExists(const char* name) {
  GstElementFactory* factory = gst_element_factory_find(name);
  if (factory != nullptr) gst_object_unref(factory);
  return factory != nullptr;
}

class SinkBinsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StartGStreamer();
    if (!FactoryExists("korvalin") || !FactoryExists("korvalinaudio"))
      GTEST_SKIP() << "the elements the bins wrap are not registered";
  }
  StoreFolder store_;
};

TEST(SinkBinsRegistration, BothAreSinksOfTheirMediaAtRankNone) {
  StartGStreamer();
  for (const BinCase& bin : kBins) {
    GstElementFactory* factory = gst_element_factory_find(bin.factory);
    ASSERT_NE(factory, nullptr) << bin.factory;
    EXPECT_EQ(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(factory)), GST_RANK_NONE);
    EXPECT_STREQ(gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS),
                 bin.klass);
    EXPECT_STREQ(gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_LONGNAME),
                 bin.longName);
    GstElement* element = gst_element_factory_create(factory, nullptr);
    GstPad* pad = gst_element_get_static_pad(element, "sink");
    EXPECT_NE(pad, nullptr) << bin.factory;
    EXPECT_TRUE(GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SINK));
    if (pad != nullptr) gst_object_unref(pad);
    gst_object_unref(element);
    gst_object_unref(factory);
  }
}

std::string FactoryName(GstElement* element) {
  GstElementFactory* factory = gst_element_get_factory(element);
  return factory ? GST_OBJECT_NAME(factory) : "";
}

// The factory of each sink inside the bin.
std::vector<std::string> InnerSinks(GstElement* bin) {
  std::vector<std::string> names;
  GstIterator* sinks = gst_bin_iterate_sinks(GST_BIN(bin));
  GValue item = G_VALUE_INIT;
  while (gst_iterator_next(sinks, &item) == GST_ITERATOR_OK) {
    GstElement* sink = GST_ELEMENT(g_value_get_object(&item));
    names.push_back(FactoryName(sink));
    g_value_reset(&item);
  }
  g_value_unset(&item);
  gst_iterator_free(sinks);
  return names;
}

TEST_F(SinkBinsTest, RaisedBinsChooseARealSinkNotThemselves) {
  const RaisedBins raised;
  for (const BinCase& bin : kBins) {
    const ScopedVariable unnamed(bin.innerVariable, nullptr);
    GstElement* element = gst_element_factory_make(bin.factory, nullptr);
    ASSERT_NE(gst_element_set_state(element, GST_STATE_READY), GST_STATE_CHANGE_FAILURE);
    const std::vector<std::string> sinks = InnerSinks(element);
    ASSERT_EQ(sinks.size(), 1u) << bin.factory;
    EXPECT_FALSE(sinks[0].starts_with("korvalin") || sinks[0].starts_with("auto")) << sinks[0];
    gst_element_set_state(element, GST_STATE_NULL);
    gst_object_unref(element);
  }
}

// A Matroska file of raw pictures and sound, 10 frames long.
std::string MakeFilm(const TempFolder& folder) {
  const std::string file = (folder.path() / "film.mkv").string();
  GstElement* pipeline = Launch(
      "videotestsrc num-buffers=10 ! video/x-raw,format=I420,width=320,height=240,"
      "framerate=25/1 ! matroskamux name=mux ! filesink location=\"" + file + "\" "
      "audiotestsrc num-buffers=10 samplesperbuffer=1920 ! audio/x-raw,format=S16LE,"
      "rate=48000,channels=2 ! mux.");
  EXPECT_TRUE(RunToEnd(pipeline));
  gst_object_unref(pipeline);
  return file;
}

TEST_F(SinkBinsTest, PlaybinPicksTheRaisedBinsAndPlaysThroughThem) {
  const TempFolder folder;
  const std::string film = MakeFilm(folder);
  const ScopedVariable video(gst::kInnerVideoSinkVariable, "fakesink");
  const ScopedVariable audio(gst::kInnerAudioSinkVariable, "fakesink");
  const RaisedBins raised;
  GstElement* playbin = gst_element_factory_make("playbin", nullptr);
  gchar* uri = gst_filename_to_uri(film.c_str(), nullptr);
  g_object_set(playbin, "uri", uri, nullptr);
  g_free(uri);
  std::set<std::string> added;  // "parent factory/child factory"
  g_signal_connect(playbin, "deep-element-added",
                   G_CALLBACK(+[](GstBin*, GstBin* parent, GstElement* child, gpointer data) {
                     static_cast<std::set<std::string>*>(data)->insert(
                         FactoryName(GST_ELEMENT(parent)) + "/" + FactoryName(child));
                   }),
                   &added);
  EXPECT_TRUE(RunToEnd(playbin));
  gst_object_unref(playbin);
  for (const char* expected : {"korvalinvideosink/korvalin", "korvalinvideosink/fakesink",
                               "korvalinaudiosink/korvalinaudio", "korvalinaudiosink/fakesink"})
    EXPECT_TRUE(added.contains(expected)) << expected;
}

}  // namespace
}  // namespace korvalin::testing
