#pragma once
// What the GStreamer tests share: GStreamer started once with our plugin registered in
// this process, a private settings store per test, and pipelines run to their end.

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "gst/plugin_features.h"
#include "support/temp_folder.h"

namespace korvalin::testing {

inline void StartGStreamer() {
  gst_init(nullptr, nullptr);
  ASSERT_TRUE(gst::RegisterStatically());
}

// A temp folder whose registry file the filters read their settings from.
class StoreFolder : public TempFolder {
 public:
  StoreFolder() { setenv("KORVALIN_REGISTRY", (path() / "registry.reg").c_str(), 1); }
  ~StoreFolder() { unsetenv("KORVALIN_REGISTRY"); }
  // Stores settings through the command-line tool, as a user would.
  void Set(const std::string& assignments) const {
    const std::string command = std::string(KORVALIN_CLI) + " settings set " + assignments;
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
  }
};

// Runs a pipeline until end of stream or error (at most `seconds`); true at the end of
// the stream. Element messages go to `onElement` when given.
template <class OnElement>
bool RunToEnd(GstElement* pipeline, OnElement onElement, int seconds = 60) {
  if (gst_element_set_state(pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
    return false;
  GstBus* bus = gst_element_get_bus(pipeline);
  bool ended = false;
  for (;;) {
    GstMessage* message = gst_bus_timed_pop_filtered(
        bus, GstClockTime(seconds) * GST_SECOND,
        static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR | GST_MESSAGE_ELEMENT));
    if (message == nullptr) break;
    const GstMessageType type = GST_MESSAGE_TYPE(message);
    if (type == GST_MESSAGE_ELEMENT) onElement(gst_message_get_structure(message));
    if (type == GST_MESSAGE_ERROR) {
      GError* error = nullptr;
      gst_message_parse_error(message, &error, nullptr);
      ADD_FAILURE() << error->message;
      g_error_free(error);
    }
    ended = type == GST_MESSAGE_EOS;
    gst_message_unref(message);
    if (type != GST_MESSAGE_ELEMENT) break;
  }
  gst_object_unref(bus);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  return ended;
}

inline bool RunToEnd(GstElement* pipeline, int seconds = 60) {
  return RunToEnd(pipeline, [](const GstStructure*) {}, seconds);
}

// Builds a pipeline from a launch line; fails the test when it does not parse.
inline GstElement* Launch(const std::string& description) {
  GError* error = nullptr;
  GstElement* pipeline = gst_parse_launch(description.c_str(), &error);
  if (error != nullptr) {
    ADD_FAILURE() << description << ": " << error->message;
    g_error_free(error);
  }
  return pipeline;
}

}  // namespace korvalin::testing
