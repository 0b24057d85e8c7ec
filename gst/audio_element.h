#pragma once

#include <gst/gst.h>

namespace korvalin::gst {

// `korvalinaudio`: raw audio in, the same samples out, declared at the raised sample rate
// and with times scaled as the pipeline's video element plays the film faster. Without a
// speed-up it is a pure pass-through.
gboolean RegisterAudioElement(GstPlugin* plugin);

}  // namespace korvalin::gst
