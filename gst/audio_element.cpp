#include "gst/audio_element.h"

#include <gst/audio/audio.h>
#include <gst/base/gstbasetransform.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include "gst/pipeline_rate.h"
#include "gst/scaled_stream.h"
#include "gst/time_scale.h"

namespace korvalin::gst {

namespace {

GST_DEBUG_CATEGORY_STATIC(korvalin_audio_debug);
#define GST_CAT_DEFAULT korvalin_audio_debug

// How long the first caps wait for the video element's decision: the video stream
// negotiates in its own thread, usually within milliseconds; past this the sound plays
// unchanged rather than not at all.
constexpr std::chrono::milliseconds kDecisionWait{3000};

struct KorvalinAudio {
  GstBaseTransform parent;
  // Guarded by the object lock.
  gboolean waited;     // waited once for the decision since start
  gboolean guessed;    // answered caps queries without knowing the speed-up
  gint32 pendingRate;  // the speed-up the latest fixed input caps were transformed with
  gint32 scaleRate;    // the speed-up of the negotiated caps: the one the times follow
};

struct KorvalinAudioClass {
  GstBaseTransformClass parent;
};

G_DEFINE_TYPE(KorvalinAudio, korvalin_audio, GST_TYPE_BASE_TRANSFORM)

KorvalinAudio* Self(GstBaseTransform* trans) {
  return reinterpret_cast<KorvalinAudio*>(trans);
}

GstBaseTransformClass* Parent() {
  return GST_BASE_TRANSFORM_CLASS(korvalin_audio_parent_class);
}

TimeScale ScaleOf(GstBaseTransform* trans) {
  GST_OBJECT_LOCK(trans);
  const TimeScale scale(Self(trans)->scaleRate);
  GST_OBJECT_UNLOCK(trans);
  return scale;
}

// ---- The speed-up ---------------------------------------------------------------------

// The speed-up for fixed input caps: the first time since start it waits for the video
// element (bounded), later it takes the current decision at once. When upstream chose its
// caps on other assumptions (a speed-up not known yet, or another one), it is asked to
// choose again, so that a downstream that insists on a rate gets it.
int32_t DecideRate(GstBaseTransform* trans) {
  KorvalinAudio* self = Self(trans);
  GST_OBJECT_LOCK(trans);
  const bool waited = self->waited;
  GST_OBJECT_UNLOCK(trans);
  const int32_t rate =
      AwaitVideoRate(GST_ELEMENT(trans), waited ? std::chrono::milliseconds{0} : kDecisionWait);
  GST_OBJECT_LOCK(trans);
  const bool assumedOther =
      (self->guessed && rate != 0) || (self->waited && rate != self->pendingRate);
  self->guessed = FALSE;
  self->waited = TRUE;
  self->pendingRate = rate;
  GST_OBJECT_UNLOCK(trans);
  GST_INFO_OBJECT(trans, "speed-up %d%s", rate, assumedOther ? ", upstream to choose again" : "");
  if (assumedOther)
    gst_pad_push_event(GST_BASE_TRANSFORM_SINK_PAD(trans), gst_event_new_reconfigure());
  return rate;
}

// The speed-up for a caps query, never waiting. Empty while it is unknown: no decision yet
// and none awaited, so the element cannot tell a speed-up from none.
std::optional<int32_t> KnownRate(GstBaseTransform* trans) {
  const int32_t rate = AwaitVideoRate(GST_ELEMENT(trans), std::chrono::milliseconds{0});
  GST_OBJECT_LOCK(trans);
  const bool known = rate != 0 || Self(trans)->waited;
  if (!known) Self(trans)->guessed = TRUE;
  GST_OBJECT_UNLOCK(trans);
  if (known) return rate;
  return std::nullopt;
}

// ---- Sample rates in caps -------------------------------------------------------------

struct RateSpan {
  int64_t low;
  int64_t high;
};

constexpr int64_t kPlayedFrame = 400000;

int64_t ClampRate(int64_t rate) {
  return std::clamp<int64_t>(rate, 1, G_MAXINT);
}

// Every sample rate r with RaisedSampleRate(r, frameRate) in `raised` (empty when none).
std::optional<RateSpan> SourceRates(RateSpan raised, int32_t frameRate) {
  // floor(r x f / 400000) >= R  <=>  r >= ceil(R x 400000 / f), and < R + 1 likewise.
  const auto atLeast = [frameRate](int64_t r) {
    return (r * kPlayedFrame + frameRate - 1) / frameRate;
  };
  const RateSpan span{ClampRate(atLeast(raised.low)), ClampRate(atLeast(raised.high + 1) - 1)};
  if (span.low > span.high) return std::nullopt;
  return span;
}

RateSpan RaisedRates(RateSpan source, int32_t frameRate) {
  const auto raise = [frameRate](int64_t r) {
    return ClampRate(RaisedSampleRate(static_cast<uint32_t>(r), frameRate));
  };
  return {raise(source.low), raise(source.high)};
}

void SetSpan(GValue* value, RateSpan span) {
  if (span.low == span.high) {
    g_value_init(value, G_TYPE_INT);
    g_value_set_int(value, static_cast<int>(span.low));
  } else {
    g_value_init(value, GST_TYPE_INT_RANGE);
    gst_value_set_int_range(value, static_cast<int>(span.low), static_cast<int>(span.high));
  }
}

enum class Direction { kRaise, kLower };

// `rate` (an int, a range or a list of them) mapped through the speed-up; false when no rate
// maps. Other kinds of value are kept.
bool MapRate(const GValue* rate, Direction direction, int32_t frameRate, GValue* mapped) {
  if (GST_VALUE_HOLDS_LIST(rate)) {
    g_value_init(mapped, GST_TYPE_LIST);
    for (guint i = 0; i < gst_value_list_get_size(rate); ++i) {
      GValue item = G_VALUE_INIT;
      if (MapRate(gst_value_list_get_value(rate, i), direction, frameRate, &item))
        gst_value_list_append_and_take_value(mapped, &item);
    }
    return gst_value_list_get_size(mapped) > 0;
  }
  std::optional<RateSpan> span;
  if (G_VALUE_HOLDS_INT(rate)) {
    span = RateSpan{g_value_get_int(rate), g_value_get_int(rate)};
  } else if (GST_VALUE_HOLDS_INT_RANGE(rate)) {
    span = RateSpan{gst_value_get_int_range_min(rate), gst_value_get_int_range_max(rate)};
  }
  if (!span) {
    g_value_init(mapped, G_VALUE_TYPE(rate));
    g_value_copy(rate, mapped);
    return true;
  }
  span = direction == Direction::kRaise ? RaisedRates(*span, frameRate)
                                        : SourceRates(*span, frameRate);
  if (span) SetSpan(mapped, *span);
  return span.has_value();
}

// `caps` with every rate field mapped; std::nullopt frame rate: any rate at all, for when
// the speed-up is not known yet. Structures whose rates all vanish are dropped.
GstCaps* MapCaps(GstCaps* caps, Direction direction, std::optional<int32_t> frameRate) {
  GstCaps* result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    GstStructure* structure = gst_structure_copy(gst_caps_get_structure(caps, i));
    GstCapsFeatures* features = gst_caps_get_features(caps, i);
    const GValue* rate = gst_structure_get_value(structure, "rate");
    GValue mapped = G_VALUE_INIT;
    bool keep = true;
    if (rate != nullptr && !frameRate) {
      gst_structure_set(structure, "rate", GST_TYPE_INT_RANGE, 1, G_MAXINT, nullptr);
    } else if (rate != nullptr) {
      keep = MapRate(rate, direction, *frameRate, &mapped);
      if (keep)
        gst_structure_take_value(structure, "rate", &mapped);
      else if (G_IS_VALUE(&mapped))
        g_value_unset(&mapped);
    }
    if (!keep) {
      gst_structure_free(structure);
      continue;
    }
    result = gst_caps_merge_structure_full(
        result, structure, features != nullptr ? gst_caps_features_copy(features) : nullptr);
  }
  return result;
}

// ---- Base transform methods -----------------------------------------------------------

GstCaps* TransformCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps,
                       GstCaps* filter) {
  std::optional<int32_t> rate;
  if (direction == GST_PAD_SINK && gst_caps_is_fixed(caps))
    rate = DecideRate(trans);
  else
    rate = KnownRate(trans);

  GstCaps* result;
  if (gst_caps_is_any(caps) || gst_caps_is_empty(caps) || (rate && TimeScale(*rate).Identity()))
    result = gst_caps_ref(caps);
  else
    result = MapCaps(caps, direction == GST_PAD_SINK ? Direction::kRaise : Direction::kLower, rate);
  if (filter != nullptr) {
    GstCaps* filtered = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(result);
    result = filtered;
  }
  return result;
}

gboolean SetCaps(GstBaseTransform* trans, GstCaps*, GstCaps*) {
  // The output caps were just made from the input caps with the pending speed-up.
  GST_OBJECT_LOCK(trans);
  Self(trans)->scaleRate = Self(trans)->pendingRate;
  GST_OBJECT_UNLOCK(trans);
  return TRUE;
}

gboolean Start(GstBaseTransform* trans) {
  GST_OBJECT_LOCK(trans);
  Self(trans)->waited = FALSE;
  Self(trans)->guessed = FALSE;
  Self(trans)->pendingRate = 0;
  Self(trans)->scaleRate = 0;
  GST_OBJECT_UNLOCK(trans);
  return TRUE;
}

// Times in buffers: an end keeps meeting the next start, so durations are the difference of
// the scaled ends.
GstFlowReturn SubmitInputBuffer(GstBaseTransform* trans, gboolean discont, GstBuffer* buffer) {
  const TimeScale scale = ScaleOf(trans);
  if (!scale.Identity()) {
    buffer = gst_buffer_make_writable(buffer);  // the metadata only: samples stay shared
    const GstClockTime pts = GST_BUFFER_PTS(buffer);
    const GstClockTime duration = GST_BUFFER_DURATION(buffer);
    GST_BUFFER_PTS(buffer) = scale.ToOutput(pts);
    GST_BUFFER_DTS(buffer) = scale.ToOutput(GST_BUFFER_DTS(buffer));
    if (GST_CLOCK_TIME_IS_VALID(pts) && GST_CLOCK_TIME_IS_VALID(duration))
      GST_BUFFER_DURATION(buffer) = scale.ToOutput(pts + duration) - scale.ToOutput(pts);
    else
      GST_BUFFER_DURATION(buffer) = scale.ToOutput(duration);
  }
  return Parent()->submit_input_buffer(trans, discont, buffer);
}

GstFlowReturn TransformInPlace(GstBaseTransform*, GstBuffer*) {
  return GST_FLOW_OK;
}

gboolean SinkEvent(GstBaseTransform* trans, GstEvent* event) {
  return Parent()->sink_event(trans, ScaleDownstreamEvent(ScaleOf(trans), event));
}

gboolean SrcEvent(GstBaseTransform* trans, GstEvent* event) {
  return HandleUpstreamEvent(trans, ScaleOf(trans), event, Parent());
}

gboolean Query(GstBaseTransform* trans, GstPadDirection direction, GstQuery* query) {
  return HandleTimedQuery(trans, ScaleOf(trans), direction, query, Parent());
}

// ---- The type -------------------------------------------------------------------------

// Any raw audio: the element never looks at the samples.
#define KORVALIN_AUDIO_CAPS                                  \
  "audio/x-raw, format = (string) " GST_AUDIO_FORMATS_ALL    \
  ", rate = (int) [ 1, max ], channels = (int) [ 1, max ], " \
  "layout = (string) { interleaved, non-interleaved }"

GstStaticPadTemplate sinkTemplate = GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS,
                                                            GST_STATIC_CAPS(KORVALIN_AUDIO_CAPS));
GstStaticPadTemplate srcTemplate = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS,
                                                           GST_STATIC_CAPS(KORVALIN_AUDIO_CAPS));

void korvalin_audio_class_init(KorvalinAudioClass* klass) {
  GST_DEBUG_CATEGORY_INIT(korvalin_audio_debug, "korvalinaudio", 0, "Korvalin audio");
  GstElementClass* element = GST_ELEMENT_CLASS(klass);
  gst_element_class_add_static_pad_template(element, &sinkTemplate);
  gst_element_class_add_static_pad_template(element, &srcTemplate);
  gst_element_class_set_static_metadata(
      element, "Korvalin Audio", "Filter/Effect/Audio",
      "Declares the sound of a film played faster at the raised sample rate, with its "
      "times scaled to match, leaving the samples untouched",
      "The Korvalin developers");

  GstBaseTransformClass* base = GST_BASE_TRANSFORM_CLASS(klass);
  base->passthrough_on_same_caps = FALSE;  // passthrough even when the rate changes
  base->transform_ip_on_passthrough = FALSE;
  base->transform_caps = TransformCaps;
  base->set_caps = SetCaps;
  base->start = Start;
  base->stop = Start;
  base->submit_input_buffer = SubmitInputBuffer;
  base->transform_ip = TransformInPlace;
  base->sink_event = SinkEvent;
  base->src_event = SrcEvent;
  base->query = Query;
}

void korvalin_audio_init(KorvalinAudio* self) {
  GstBaseTransform* trans = GST_BASE_TRANSFORM(self);
  // The same buffers go out: the samples are not touched, only the caps and the times.
  gst_base_transform_set_passthrough(trans, TRUE);
  gst_base_transform_set_in_place(trans, TRUE);
  // Caps from downstream are at the raised rate: offered unchanged upstream they would be
  // taken for the source rate and raised a second time.
  gst_base_transform_set_prefer_passthrough(trans, FALSE);
}

}  // namespace

gboolean RegisterAudioElement(GstPlugin* plugin) {
  return gst_element_register(plugin, "korvalinaudio", GST_RANK_NONE, korvalin_audio_get_type());
}

}  // namespace korvalin::gst
