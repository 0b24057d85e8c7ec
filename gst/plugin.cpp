// The plugin's entry point: what GStreamer loads from libgstkorvalin.so.
#include "gst/plugin_features.h"

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, korvalin,
                  "Frames, subtitles and a clock for films watched on a TV",
                  korvalin::gst::RegisterFeatures, KORVALIN_GST_VERSION, "LGPL",
                  KORVALIN_GST_PACKAGE, "https://korvalin.example.org/")
