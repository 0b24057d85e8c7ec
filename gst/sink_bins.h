#pragma once

#include <gst/gst.h>

namespace korvalin::gst {

// `korvalinvideosink` ("Sink/Video") and `korvalinaudiosink` ("Sink/Audio"): a converter,
// our element, a converter and the best real sink by rank other than themselves. Registered
// at rank NONE: raising their rank puts Korvalin into every player that picks its sinks by
// rank.
//
// The real sink is chosen when the bin first goes to READY: the first that opens among the
// factory named by the variable below (when set), the sinks of the bin's media of rank
// MARGINAL or more, best first (without our own features and autodetect's bins, which would
// pick us again), and last a fakesink that plays in time. The bins' "ts-offset" goes to it.
gboolean RegisterSinkBins(GstPlugin* plugin);

// Environment variables naming the real sink's factory, e.g. "fakesink" for headless runs.
inline constexpr const char* kInnerVideoSinkVariable = "KORVALIN_INNER_VIDEOSINK";
inline constexpr const char* kInnerAudioSinkVariable = "KORVALIN_INNER_AUDIOSINK";

}  // namespace korvalin::gst
