#include "gst/scaled_stream.h"

namespace korvalin::gst {

// Segments and gaps going downstream, in output time.
GstEvent* ScaleDownstreamEvent(const TimeScale& scale, GstEvent* event) {
  if (scale.Identity()) return event;
  GstEvent* scaled = nullptr;
  if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
    GstSegment segment;
    gst_event_copy_segment(event, &segment);
    scale.ScaleSegment(&segment);
    scaled = gst_event_new_segment(&segment);
  } else if (GST_EVENT_TYPE(event) == GST_EVENT_GAP) {
    GstClockTime timestamp, duration;
    GstGapFlags flags;
    gst_event_parse_gap(event, &timestamp, &duration);
    gst_event_parse_gap_flags(event, &flags);
    const GstClockTime end = GST_CLOCK_TIME_IS_VALID(duration) ? timestamp + duration : duration;
    scaled = gst_event_new_gap(scale.ToOutput(timestamp),
                               GST_CLOCK_TIME_IS_VALID(end)
                                   ? scale.ToOutput(end) - scale.ToOutput(timestamp)
                                   : GST_CLOCK_TIME_NONE);
    gst_event_set_gap_flags(scaled, flags);
  } else {
    return event;
  }
  gst_event_set_seqnum(scaled, gst_event_get_seqnum(event));
  gst_event_unref(event);
  return scaled;
}

namespace {

// Quality reports go upstream in source time; our own QoS bookkeeping stays in output time,
// the time of the segment we pass on.
gboolean SendQosUpstream(GstBaseTransform* trans, const TimeScale& scale, GstEvent* event) {
  GstQOSType type;
  gdouble proportion;
  GstClockTimeDiff diff;
  GstClockTime timestamp;
  gst_event_parse_qos(event, &type, &proportion, &diff, &timestamp);
  gst_base_transform_update_qos(trans, proportion, diff, timestamp);
  GstEvent* source =
      gst_event_new_qos(type, proportion, scale.ToSourceSigned(diff), scale.ToSource(timestamp));
  gst_event_set_seqnum(source, gst_event_get_seqnum(event));
  gst_event_unref(event);
  return gst_pad_push_event(GST_BASE_TRANSFORM_SINK_PAD(trans), source);
}

// A convert query asked in output time, answered upstream; the question keeps its own value
// rather than one rounded twice.
gboolean ConvertUpstream(GstBaseTransform* trans, const TimeScale& scale, GstQuery* query) {
  GstFormat format, destFormat;
  gint64 value, destValue;
  gst_query_parse_convert(query, &format, &value, &destFormat, nullptr);
  scale.ConvertQueryToSource(query);
  const gboolean answered = gst_pad_peer_query(GST_BASE_TRANSFORM_SINK_PAD(trans), query);
  if (answered) scale.AnswerToOutput(query);
  gst_query_parse_convert(query, nullptr, nullptr, nullptr, &destValue);
  gst_query_set_convert(query, format, value, destFormat, answered ? destValue : -1);
  return answered;
}

bool AsksForTimes(GstQuery* query) {
  switch (GST_QUERY_TYPE(query)) {
    case GST_QUERY_DURATION:
    case GST_QUERY_POSITION:
    case GST_QUERY_SEGMENT:
    case GST_QUERY_CONVERT:
      return true;
    default:
      return false;
  }
}

}  // namespace

gboolean HandleUpstreamEvent(GstBaseTransform* trans, const TimeScale& scale, GstEvent* event,
                             GstBaseTransformClass* parent) {
  if (!scale.Identity() && GST_EVENT_TYPE(event) == GST_EVENT_QOS)
    return SendQosUpstream(trans, scale, event);
  if (!scale.Identity() && GST_EVENT_TYPE(event) == GST_EVENT_SEEK) {
    GstEvent* seek = scale.SeekToSource(event);
    gst_event_unref(event);
    event = seek;
  }
  return parent->src_event(trans, event);
}

gboolean HandleTimedQuery(GstBaseTransform* trans, const TimeScale& scale,
                          GstPadDirection direction, GstQuery* query,
                          GstBaseTransformClass* parent) {
  if (direction != GST_PAD_SRC || scale.Identity() || !AsksForTimes(query))
    return parent->query(trans, direction, query);
  if (GST_QUERY_TYPE(query) == GST_QUERY_CONVERT && ConvertUpstream(trans, scale, query))
    return TRUE;
  if (GST_QUERY_TYPE(query) != GST_QUERY_CONVERT &&
      gst_pad_peer_query(GST_BASE_TRANSFORM_SINK_PAD(trans), query)) {
    scale.AnswerToOutput(query);
    return TRUE;
  }
  // Unanswered upstream: the base class answers what it can from the segment it passed on,
  // which is in output time already.
  return parent->query(trans, direction, query);
}


}  // namespace korvalin::gst
