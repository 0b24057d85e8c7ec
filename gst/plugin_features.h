#pragma once

#include <gst/gst.h>

namespace korvalin::gst {

// Registers the plugin's four features: the elements `korvalin` and `korvalinaudio` and the
// bins `korvalinvideosink` and `korvalinaudiosink`.
gboolean RegisterFeatures(GstPlugin* plugin);

// Registers the plugin inside this process (tests, `korvalin play`) without loading the
// shared library; a second call does nothing. False when it could not be registered.
bool RegisterStatically();

}  // namespace korvalin::gst
