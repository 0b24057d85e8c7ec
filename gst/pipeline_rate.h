#pragma once

#include <chrono>
#include <cstdint>

#include <gst/gst.h>

namespace korvalin::gst {

// The speed-up that a pipeline's video element decided, shared with the audio elements of
// the same top-level pipeline (kept on that pipeline object, so two pipelines in one
// process never mix). All functions are thread-safe.

// A video element is in the pipeline (called when it goes from READY to PAUSED): audio
// elements of this pipeline wait for its decision.
void ExpectVideoRate(GstElement* videoElement);
// The video element decided: `rate` is the source frame duration played as 40 ms, 0 for
// none. Wakes every waiting audio element. A later call replaces the decision.
void PublishVideoRate(GstElement* videoElement, int32_t rate);
// The video element leaves (PAUSED to READY): its decision is forgotten.
void WithdrawVideoRate(GstElement* videoElement);
// The decision for the pipeline that holds `audioElement`: at once when it is made or when
// no video element is expected, else after waiting at most `limit` (then 0).
int32_t AwaitVideoRate(GstElement* audioElement, std::chrono::milliseconds limit);

}  // namespace korvalin::gst
