#pragma once

#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>

#include "gst/time_scale.h"

namespace korvalin::gst {

// The event and query handling of the elements that scale their stream's times (a film
// played faster), so the video and the audio element answer alike.

// A segment or gap going downstream, in output time: takes `event`, gives the event to send.
GstEvent* ScaleDownstreamEvent(const TimeScale& scale, GstEvent* event);
// An event from downstream: a seek is turned back into source time, a quality report goes
// upstream in source time; anything else goes to `parent`'s handler as it is.
gboolean HandleUpstreamEvent(GstBaseTransform* trans, const TimeScale& scale, GstEvent* event,
                             GstBaseTransformClass* parent);
// Duration, position, segment and convert queries on the source pad are asked upstream and
// answered in output time; others (and unanswered ones) go to `parent`'s handler.
gboolean HandleTimedQuery(GstBaseTransform* trans, const TimeScale& scale,
                          GstPadDirection direction, GstQuery* query,
                          GstBaseTransformClass* parent);

}  // namespace korvalin::gst
