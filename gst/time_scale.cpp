#include "gst/time_scale.h"

#include <algorithm>
#include <limits>

namespace korvalin::gst {

namespace {

// The frame duration, in 100-ns units, that plays as one 40 ms frame.
constexpr uint64_t kPlayedFrame = 400000;

// value x num / den rounded down; a result too large for a time saturates just below NONE,
// so a valid time never turns into "no time".
GstClockTime ScaleTime(GstClockTime value, uint64_t num, uint64_t den) {
  if (value == GST_CLOCK_TIME_NONE) return GST_CLOCK_TIME_NONE;
  return std::min(gst_util_uint64_scale(value, num, den), GST_CLOCK_TIME_NONE - 1);
}

// The same for signed values: -1 stays -1, negative values round down (away from zero).
int64_t ScaleSigned(int64_t value, uint64_t num, uint64_t den) {
  constexpr uint64_t kMax = std::numeric_limits<int64_t>::max();
  if (value == -1) return -1;
  if (value >= 0) return static_cast<int64_t>(std::min(ScaleTime(value, num, den), kMax));
  const uint64_t magnitude = uint64_t{0} - static_cast<uint64_t>(value);
  const uint64_t scaled = gst_util_uint64_scale_ceil(magnitude, num, den);
  if (scaled > kMax) return std::numeric_limits<int64_t>::min();
  return -static_cast<int64_t>(scaled);
}

}  // namespace

TimeScale::TimeScale(int32_t rate)
    : rate_(rate),
      outputUnits_(kPlayedFrame),
      sourceUnits_(rate < 1 ? kPlayedFrame : uint64_t(rate)) {}

TimeScale TimeScale::ForFilm(int32_t rate, int rateNumerator, int rateDenominator) {
  TimeScale scale(rate);
  if (rate < 1 || rateNumerator <= 0 || rateDenominator <= 0) return scale;
  const uint64_t frame = uint64_t{10000000} * uint64_t(rateDenominator) / uint64_t(rateNumerator);
  if (frame != uint64_t(rate)) return scale;
  // 10^7 d / n units play as 400000: output = source x n / (25 d).
  scale.outputUnits_ = uint64_t(rateNumerator);
  scale.sourceUnits_ = 25 * uint64_t(rateDenominator);
  return scale;
}

bool TimeScale::Identity() const {
  return outputUnits_ == sourceUnits_;
}

void TimeScale::ScaleFrameRate(int numerator, int denominator, int* outNumerator,
                               int* outDenominator) const {
  *outNumerator = numerator, *outDenominator = denominator;
  if (Identity() || numerator <= 0 || denominator <= 0) return;
  // Frames come faster by sourceUnits / outputUnits.
  gst_util_fraction_multiply(numerator, denominator, int(sourceUnits_), int(outputUnits_),
                             outNumerator, outDenominator);
}

GstClockTime TimeScale::ToOutput(GstClockTime source) const {
  return Identity() ? source : ScaleTime(source, outputUnits_, sourceUnits_);
}

GstClockTime TimeScale::ToSource(GstClockTime output) const {
  return Identity() ? output : ScaleTime(output, sourceUnits_, outputUnits_);
}

int64_t TimeScale::ToOutputSigned(int64_t source) const {
  return Identity() ? source : ScaleSigned(source, outputUnits_, sourceUnits_);
}

int64_t TimeScale::ToSourceSigned(int64_t output) const {
  return Identity() ? output : ScaleSigned(output, sourceUnits_, outputUnits_);
}

void TimeScale::ScaleSegment(GstSegment* segment) const {
  if (Identity() || segment->format != GST_FORMAT_TIME) return;
  // Every field is a time or NONE (stop and duration use -1 for "open"), which ToOutput
  // keeps as it is.
  segment->start = ToOutput(segment->start);
  segment->stop = ToOutput(segment->stop);
  segment->time = ToOutput(segment->time);
  segment->base = ToOutput(segment->base);
  segment->position = ToOutput(segment->position);
  segment->duration = ToOutput(segment->duration);
  segment->offset = ToOutput(segment->offset);
}

GstEvent* TimeScale::SeekToSource(GstEvent* seek) const {
  gdouble rate;
  GstFormat format;
  GstSeekFlags flags;
  GstSeekType startType, stopType;
  gint64 start, stop;
  gst_event_parse_seek(seek, &rate, &format, &flags, &startType, &start, &stopType, &stop);
  if (Identity() || format != GST_FORMAT_TIME) return gst_event_ref(seek);

  if (startType != GST_SEEK_TYPE_NONE) start = ToSourceSigned(start);
  if (stopType != GST_SEEK_TYPE_NONE) stop = ToSourceSigned(stop);
  GstEvent* source = gst_event_new_seek(rate, format, flags, startType, start, stopType, stop);
  GstClockTime interval = GST_CLOCK_TIME_NONE;
  gst_event_parse_seek_trickmode_interval(seek, &interval);
  if (GST_CLOCK_TIME_IS_VALID(interval))
    gst_event_set_seek_trickmode_interval(source, ToSource(interval));
  // The same seqnum lets the elements upstream and the application match what follows
  // (flushes, segments, the async-done) to this seek.
  gst_event_set_seqnum(source, gst_event_get_seqnum(seek));
  return source;
}

void TimeScale::AnswerToOutput(GstQuery* query) const {
  if (Identity()) return;
  GstFormat format;
  switch (GST_QUERY_TYPE(query)) {
    case GST_QUERY_DURATION: {
      gint64 duration;
      gst_query_parse_duration(query, &format, &duration);
      if (format == GST_FORMAT_TIME)
        gst_query_set_duration(query, format, ToOutputSigned(duration));
      break;
    }
    case GST_QUERY_POSITION: {
      gint64 position;
      gst_query_parse_position(query, &format, &position);
      if (format == GST_FORMAT_TIME)
        gst_query_set_position(query, format, ToOutputSigned(position));
      break;
    }
    case GST_QUERY_SEGMENT: {
      gdouble rate;
      gint64 start, stop;
      gst_query_parse_segment(query, &rate, &format, &start, &stop);
      if (format == GST_FORMAT_TIME)
        gst_query_set_segment(query, rate, format, ToOutputSigned(start), ToOutputSigned(stop));
      break;
    }
    case GST_QUERY_CONVERT: {
      // Both sides: the question was turned to source time by ConvertQueryToSource.
      GstFormat destFormat;
      gint64 value, destValue;
      gst_query_parse_convert(query, &format, &value, &destFormat, &destValue);
      if (format == GST_FORMAT_TIME) value = ToOutputSigned(value);
      if (destFormat == GST_FORMAT_TIME) destValue = ToOutputSigned(destValue);
      gst_query_set_convert(query, format, value, destFormat, destValue);
      break;
    }
    default:
      break;
  }
}

void TimeScale::ConvertQueryToSource(GstQuery* query) const {
  if (Identity() || GST_QUERY_TYPE(query) != GST_QUERY_CONVERT) return;
  GstFormat format, destFormat;
  gint64 value, destValue;
  gst_query_parse_convert(query, &format, &value, &destFormat, &destValue);
  if (format != GST_FORMAT_TIME) return;
  gst_query_set_convert(query, format, ToSourceSigned(value), destFormat, destValue);
}

uint32_t RaisedSampleRate(uint32_t sampleRate, int32_t frameRate) {
  if (frameRate < 1) return sampleRate;
  const uint64_t raised = uint64_t{sampleRate} * uint64_t(frameRate) / kPlayedFrame;
  return static_cast<uint32_t>(std::min<uint64_t>(raised, std::numeric_limits<uint32_t>::max()));
}

}  // namespace korvalin::gst
