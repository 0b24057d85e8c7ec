#include "gst/plugin_features.h"

#include <mutex>

#include "gst/audio_element.h"
#include "gst/sink_bins.h"
#include "gst/video_element.h"

namespace korvalin::gst {

gboolean RegisterFeatures(GstPlugin* plugin) {
  return RegisterVideoElement(plugin) && RegisterAudioElement(plugin) &&
         RegisterSinkBins(plugin);
}

bool RegisterStatically() {
  static std::once_flag once;
  static bool registered = false;
  std::call_once(once, [] {
    registered = gst_plugin_register_static(
        GST_VERSION_MAJOR, GST_VERSION_MINOR, "korvalin",
        "Frames, subtitles and a clock for films watched on a TV", RegisterFeatures,
        KORVALIN_GST_VERSION, "LGPL", KORVALIN_GST_PACKAGE, KORVALIN_GST_PACKAGE,
        "https://korvalin.example.org/");
  });
  return registered;
}

}  // namespace korvalin::gst
