// `korvalin`: a GstVideoFilter around the video filter. GStreamer's caps, buffers and
// segments become the filter's media types, samples and segments (element_filter.h); the
// film's file comes from upstream, so the subtitles beside it load by themselves; a film
// played faster has its times scaled instead of a faster clock.
#include "gst/video_element.h"

#include <cstring>
#include <new>
#include <vector>

#include <gst/video/gstvideofilter.h>

#include "gst/element_filter.h"
#include "gst/film_caps.h"
#include "gst/film_location.h"
#include "gst/pipeline_rate.h"
#include "gst/scaled_stream.h"
#include "gst/time_scale.h"

namespace korvalin::gst {
namespace {

GST_DEBUG_CATEGORY_STATIC(korvalin_debug);
#define GST_CAT_DEFAULT korvalin_debug

// Per-element state, kept beside the GObject instance.
struct VideoState {
  ElementFilter filter;
  std::mutex lock;  // guards the fields below
  std::string fileName;
  bool fileKnown = false;
  double durationSeconds = 0;
  TimeScale scale;
  GstSegment segment{};
  int64_t frameDuration = 0;  // GstClockTime of one frame from the caps, 0 unknown
  // What the filter frames now, and whether a new stream (gapless playback) asks for the
  // film to be connected anew before the next frame.
  FilmFormat format;
  PixelFormat pixels = PixelFormat::YUY2;
  bool framing = false;
  bool newStream = false;
  std::vector<uint8_t> packedIn, packedOut;
};

struct KorvalinVideo {
  GstVideoFilter parent;
  alignas(VideoState) unsigned char storage[sizeof(VideoState)];
};

struct KorvalinVideoClass {
  GstVideoFilterClass parent_class;
};

enum { PROP_0, PROP_SUBTITLE_FILE, PROP_SUBTITLE_LANGUAGE, PROP_SUBTITLE_INFO };

GType korvalin_video_get_type();
G_DEFINE_TYPE(KorvalinVideo, korvalin_video, GST_TYPE_VIDEO_FILTER)

VideoState& State(gpointer self) {
  return *std::launder(reinterpret_cast<VideoState*>(reinterpret_cast<KorvalinVideo*>(self)->storage));
}

GstPad* SinkPad(gpointer self) { return GST_BASE_TRANSFORM_SINK_PAD(self); }

// The film as the element knows it now; asks upstream for its file the first time.
Film FilmOf(gpointer self, const FilmFormat& format) {
  VideoState& state = State(self);
  std::lock_guard lock(state.lock);
  if (!state.fileKnown) {
    state.fileName = FilmFileUpstream(SinkPad(self));
    state.durationSeconds = FilmDurationUpstream(SinkPad(self));
    state.fileKnown = true;
    GST_INFO_OBJECT(self, "film file: '%s', %.3f s", state.fileName.c_str(),
                    state.durationSeconds);
  }
  return Film{format, state.fileName, state.durationSeconds};
}

void PostSubtitlesLoaded(gpointer self) {
  const ElementFilter::SubtitleInfo info = State(self).filter.Subtitles();
  if (info.file.empty()) return;
  GstStructure* s = gst_structure_new(kSubtitlesLoadedMessage, "file", G_TYPE_STRING,
                                      info.file.c_str(), "format", G_TYPE_STRING,
                                      info.format.c_str(), nullptr);
  gst_element_post_message(GST_ELEMENT(self), gst_message_new_element(GST_OBJECT(self), s));
}

// ---- caps ----

GstCaps* TransformCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps,
                       GstCaps* filter) {
  GstCaps* result = gst_caps_new_empty();
  if (direction == GST_PAD_SRC) {
    // Any framed picture may come from any film: the sizes do not run backwards.
    GstCaps* any = SinkTemplateCaps();
    gst_caps_append(result, any);
  } else {
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
      const GstStructure* s = gst_caps_get_structure(caps, i);
      const std::optional<FilmFormat> format = FilmOfStructure(s);
      if (!format) {
        gst_caps_append(result, SourceTemplateCaps());
        continue;
      }
      const FilmDecision decision = State(trans).filter.Decide(FilmOf(trans, *format));
      // Not taking part: the frames pass untouched, so the caps stay as they are.
      gst_caps_append(result, decision.active ? FramedCaps(s, decision)
                                              : gst_caps_new_full(gst_structure_copy(s), nullptr));
    }
  }
  if (filter != nullptr) {
    GstCaps* narrowed = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(result);
    result = narrowed;
  }
  GST_DEBUG_OBJECT(trans, "%s %" GST_PTR_FORMAT " -> %" GST_PTR_FORMAT,
                   direction == GST_PAD_SINK ? "down" : "up", static_cast<void*>(caps),
                   static_cast<void*>(result));
  return result;
}

gboolean SetInfo(GstVideoFilter* self, GstCaps*, GstVideoInfo* in, GstCaps*, GstVideoInfo* out) {
  VideoState& state = State(self);
  FilmFormat format;
  format.width = GST_VIDEO_INFO_WIDTH(in);
  format.height = GST_VIDEO_INFO_HEIGHT(in);
  if (GST_VIDEO_INFO_FPS_N(in) > 0) {
    format.rateNumerator = GST_VIDEO_INFO_FPS_N(in);
    format.rateDenominator = GST_VIDEO_INFO_FPS_D(in);
  }
  format.pixelAspectNumerator = std::max(GST_VIDEO_INFO_PAR_N(in), 1);
  format.pixelAspectDenominator = std::max(GST_VIDEO_INFO_PAR_D(in), 1);
  const Film film = FilmOf(self, format);
  const FilmDecision decision = state.filter.Decide(film);
  const std::optional<PixelFormat> pixels = PixelFormatOf(GST_VIDEO_INFO_FORMAT(out));
  const bool active = decision.active && pixels && state.filter.Start(film, *pixels);
  gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(self), !active);
  {
    std::lock_guard lock(state.lock);
    state.format = format;
    state.pixels = pixels.value_or(PixelFormat::YUY2);
    state.framing = active;
    state.newStream = false;
    state.scale = TimeScale::ForFilm(active ? decision.clockRate : 0, format.rateNumerator,
                                     format.rateDenominator);
    state.frameDuration = format.rateNumerator > 0
                              ? gst_util_uint64_scale(GST_SECOND, format.rateDenominator,
                                                      format.rateNumerator)
                              : 0;
  }
  PublishVideoRate(GST_ELEMENT(self), active ? decision.clockRate : 0);
  if (active) PostSubtitlesLoaded(self);
  GST_INFO_OBJECT(self, "%s, speed-up rate %d", active ? "framing" : "passing through",
                  active ? decision.clockRate : 0);
  if (!active && decision.active) return FALSE;  // the filter refused the output format
  if (active && (GST_VIDEO_INFO_WIDTH(out) != decision.shape.width ||
                 GST_VIDEO_INFO_HEIGHT(out) != decision.shape.height)) {
    return FALSE;
  }
  return TRUE;
}

// ---- frames ----

// The rows of a plane packed one after the other, copied only when the stride pads them.
const uint8_t* PackedInput(const GstVideoFrame* frame, std::vector<uint8_t>* scratch) {
  const int width = GST_VIDEO_FRAME_WIDTH(frame) * 2, rows = GST_VIDEO_FRAME_HEIGHT(frame);
  const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0);
  const auto* data = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0));
  if (stride == width) return data;
  scratch->resize(std::size_t(width) * rows);
  for (int row = 0; row < rows; ++row)
    std::memcpy(scratch->data() + std::size_t(width) * row, data + std::size_t(stride) * row, width);
  return scratch->data();
}

int PackedRowBytes(const GstVideoFrame* frame) {
  return GST_VIDEO_FRAME_WIDTH(frame) * GST_VIDEO_FRAME_COMP_PSTRIDE(frame, 0);
}

void UnpackOutput(const std::vector<uint8_t>& packed, GstVideoFrame* frame) {
  const int width = PackedRowBytes(frame), stride = GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0);
  auto* data = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0));
  for (int row = 0; row < GST_VIDEO_FRAME_HEIGHT(frame); ++row)
    std::memcpy(data + std::size_t(stride) * row, packed.data() + std::size_t(width) * row, width);
}

// A frame the filter left alone (an impossible geometry) goes out black, not as garbage.
void Blacken(GstVideoFrame* frame) {
  const bool yuv = GST_VIDEO_FRAME_FORMAT(frame) == GST_VIDEO_FORMAT_YUY2;
  auto* data = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0));
  const std::size_t size = std::size_t(GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0)) *
                           GST_VIDEO_FRAME_HEIGHT(frame);
  if (!yuv) {
    std::memset(data, 0, size);
    return;
  }
  for (std::size_t i = 0; i + 1 < size; i += 2) data[i] = 0x10, data[i + 1] = 0x80;
}

FrameIn FrameTimes(VideoState& state, GstBuffer* buffer) {
  FrameIn in;
  const GstClockTime pts = GST_BUFFER_PTS(buffer);
  GstClockTime duration = GST_BUFFER_DURATION(buffer);
  if (!GST_CLOCK_TIME_IS_VALID(duration) && state.frameDuration > 0) duration = state.frameDuration;
  if (GST_CLOCK_TIME_IS_VALID(pts) && GST_CLOCK_TIME_IS_VALID(duration)) {
    const int64_t start = static_cast<int64_t>(pts) - static_cast<int64_t>(state.segment.start);
    in.timed = true;
    in.start = start / 100;
    in.stop = (start + static_cast<int64_t>(duration)) / 100;
  }
  in.syncPoint = !GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT);
  in.discontinuity = GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT);
  return in;
}

void ScaleBufferTimes(const TimeScale& scale, GstBuffer* buffer) {
  if (scale.Identity()) return;
  GST_BUFFER_PTS(buffer) = scale.ToOutput(GST_BUFFER_PTS(buffer));
  GST_BUFFER_DTS(buffer) = scale.ToOutput(GST_BUFFER_DTS(buffer));
  GST_BUFFER_DURATION(buffer) = scale.ToOutput(GST_BUFFER_DURATION(buffer));
}

// A new stream with the same caps (gapless playback) brings no new caps: the next film is
// connected here, so its own subtitles load.
void FollowNewStream(GstVideoFilter* self) {
  VideoState& state = State(self);
  FilmFormat format;
  PixelFormat pixels;
  {
    std::lock_guard lock(state.lock);
    if (!state.newStream || !state.framing) return;
    state.newStream = false;
    format = state.format;
    pixels = state.pixels;
  }
  if (state.filter.Start(FilmOf(self, format), pixels)) {
    PostSubtitlesLoaded(self);
  } else {
    // The next film does not need the filter: negotiate the pass-through.
    gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(self));
  }
}

GstFlowReturn TransformFrame(GstVideoFilter* self, GstVideoFrame* in, GstVideoFrame* out) {
  FollowNewStream(self);
  VideoState& state = State(self);
  std::lock_guard lock(state.lock);
  FrameIn frame = FrameTimes(state, in->buffer);
  frame.pixels = PackedInput(in, &state.packedIn);
  frame.size = std::size_t(GST_VIDEO_FRAME_WIDTH(in)) * 2 * GST_VIDEO_FRAME_HEIGHT(in);

  const int rowBytes = PackedRowBytes(out);
  const bool packed = GST_VIDEO_FRAME_PLANE_STRIDE(out, 0) == rowBytes;
  const std::size_t outSize = std::size_t(rowBytes) * GST_VIDEO_FRAME_HEIGHT(out);
  if (!packed) state.packedOut.resize(outSize);
  uint8_t* target = packed ? static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(out, 0))
                           : state.packedOut.data();
  const FrameResult result = state.filter.Transform(frame, target, outSize);
  if (result == FrameResult::kDropped) return GST_BASE_TRANSFORM_FLOW_DROPPED;
  if (result == FrameResult::kUntouched) Blacken(out);
  else if (!packed) UnpackOutput(state.packedOut, out);
  ScaleBufferTimes(state.scale, out->buffer);
  return GST_FLOW_OK;
}

// ---- events and queries ----

TimeScale CurrentScale(gpointer self) {
  VideoState& state = State(self);
  std::lock_guard lock(state.lock);
  return state.scale;
}

gboolean SinkEvent(GstBaseTransform* trans, GstEvent* event) {
  VideoState& state = State(trans);
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START: {
      // A new film (gapless playback): its file and decisions are found anew.
      {
        std::lock_guard lock(state.lock);
        state.fileKnown = false;
        state.newStream = true;
      }
      state.filter.Forget();
      gst_base_transform_reconfigure_src(trans);
      break;
    }
    case GST_EVENT_SEGMENT: {
      const GstSegment* segment = nullptr;
      gst_event_parse_segment(event, &segment);
      TimeScale scale;
      {
        std::lock_guard lock(state.lock);
        gst_segment_copy_into(segment, &state.segment);
        scale = state.scale;
      }
      if (segment->format == GST_FORMAT_TIME)
        state.filter.NewSegment(static_cast<int64_t>(segment->time) / 100);
      event = ScaleDownstreamEvent(scale, event);
      break;
    }
    case GST_EVENT_GAP:
      event = ScaleDownstreamEvent(CurrentScale(trans), event);
      break;
    default:
      break;
  }
  return GST_BASE_TRANSFORM_CLASS(korvalin_video_parent_class)->sink_event(trans, event);
}

gboolean SrcEvent(GstBaseTransform* trans, GstEvent* event) {
  return HandleUpstreamEvent(trans, CurrentScale(trans), event,
                             GST_BASE_TRANSFORM_CLASS(korvalin_video_parent_class));
}

gboolean Query(GstBaseTransform* trans, GstPadDirection direction, GstQuery* query) {
  return HandleTimedQuery(trans, CurrentScale(trans), direction, query,
                          GST_BASE_TRANSFORM_CLASS(korvalin_video_parent_class));
}

GstStateChangeReturn ChangeState(GstElement* element, GstStateChange transition) {
  if (transition == GST_STATE_CHANGE_NULL_TO_READY ||
      transition == GST_STATE_CHANGE_READY_TO_PAUSED) {
    ExpectVideoRate(element);
  }
  const GstStateChangeReturn result =
      GST_ELEMENT_CLASS(korvalin_video_parent_class)->change_state(element, transition);
  if (transition == GST_STATE_CHANGE_PAUSED_TO_READY) {
    WithdrawVideoRate(element);
    VideoState& state = State(element);
    std::lock_guard lock(state.lock);
    state.fileKnown = false;
  }
  return result;
}

// ---- properties ----

GstStructure* SubtitleInfoStructure(const ElementFilter::SubtitleInfo& info) {
  GValue languages = G_VALUE_INIT;
  gst_value_array_init(&languages, info.languages.size());
  for (const std::string& name : info.languages) {
    GValue item = G_VALUE_INIT;
    g_value_init(&item, G_TYPE_STRING);
    g_value_set_string(&item, name.c_str());
    gst_value_array_append_and_take_value(&languages, &item);
  }
  GstStructure* s = gst_structure_new("subtitle-info", "file", G_TYPE_STRING, info.file.c_str(),
                                      "format", G_TYPE_STRING, info.format.c_str(), "index",
                                      G_TYPE_INT, info.index, nullptr);
  gst_structure_take_value(s, "languages", &languages);
  return s;
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
  VideoState& state = State(object);
  const char* text = g_value_get_string(value);
  const std::string given = text ? text : "";
  const ElementFilter::SubtitleInfo now = state.filter.Subtitles();
  switch (id) {
    case PROP_SUBTITLE_FILE:
      if (!state.filter.SelectSubtitle(given, ""))
        GST_ELEMENT_WARNING(object, RESOURCE, READ, ("Can't load subtitles %s", given.c_str()),
                            (nullptr));
      break;
    case PROP_SUBTITLE_LANGUAGE:
      state.filter.SelectSubtitle(now.file, given);
      break;
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
      return;
  }
  PostSubtitlesLoaded(object);
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
  const ElementFilter::SubtitleInfo info = State(object).filter.Subtitles();
  switch (id) {
    case PROP_SUBTITLE_FILE:
      g_value_set_string(value, info.file.c_str());
      break;
    case PROP_SUBTITLE_LANGUAGE: {
      const bool chosen = info.index >= 0 && std::size_t(info.index) < info.languages.size();
      g_value_set_string(value, chosen ? info.languages[info.index].c_str() : "");
      break;
    }
    case PROP_SUBTITLE_INFO:
      g_value_take_boxed(value, SubtitleInfoStructure(info));
      break;
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
  }
}

void Finalize(GObject* object) {
  State(object).~VideoState();
  G_OBJECT_CLASS(korvalin_video_parent_class)->finalize(object);
}

void InstallProperties(GObjectClass* object) {
  const auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
  g_object_class_install_property(
      object, PROP_SUBTITLE_FILE,
      g_param_spec_string("subtitle-file", "Subtitle file",
                          "The subtitle file shown (\"\" for none); found beside the film "
                          "unless set",
                          "", flags));
  g_object_class_install_property(
      object, PROP_SUBTITLE_LANGUAGE,
      g_param_spec_string("subtitle-language", "Subtitle language",
                          "The language shown, among those of the subtitle file", "", flags));
  g_object_class_install_property(
      object, PROP_SUBTITLE_INFO,
      g_param_spec_boxed("subtitle-info", "Subtitle info",
                         "The loaded file, its format, its languages and the chosen one",
                         GST_TYPE_STRUCTURE,
                         static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS)));
}

void korvalin_video_class_init(KorvalinVideoClass* klass) {
  auto* object = G_OBJECT_CLASS(klass);
  auto* element = GST_ELEMENT_CLASS(klass);
  auto* trans = GST_BASE_TRANSFORM_CLASS(klass);
  auto* video = GST_VIDEO_FILTER_CLASS(klass);
  object->set_property = SetProperty;
  object->get_property = GetProperty;
  object->finalize = Finalize;
  InstallProperties(object);

  gst_element_class_set_static_metadata(
      element, "Korvalin", "Filter/Effect/Video",
      "Frames the picture for a TV and draws subtitles and a clock over it",
      "Korvalin developers");
  GstCaps* sink = SinkTemplateCaps();
  GstCaps* src = SourceTemplateCaps();
  gst_element_class_add_pad_template(element,
                                     gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, sink));
  gst_element_class_add_pad_template(element,
                                     gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, src));
  gst_caps_unref(sink);
  gst_caps_unref(src);
  element->change_state = ChangeState;

  trans->transform_caps = TransformCaps;
  trans->sink_event = SinkEvent;
  trans->src_event = SrcEvent;
  trans->query = Query;
  trans->passthrough_on_same_caps = FALSE;
  video->set_info = SetInfo;
  video->transform_frame = TransformFrame;
}

void korvalin_video_init(KorvalinVideo* self) {
  new (self->storage) VideoState();
  gst_segment_init(&State(self).segment, GST_FORMAT_TIME);
}

}  // namespace

gboolean RegisterVideoElement(GstPlugin* plugin) {
  GST_DEBUG_CATEGORY_INIT(korvalin_debug, "korvalin", 0, "Korvalin video filter");
  return gst_element_register(plugin, "korvalin", GST_RANK_NONE, korvalin_video_get_type());
}

host::ComPtr<IFilterSettings> FilterSettingsOf(GstElement* element) {
  if (element == nullptr || !G_TYPE_CHECK_INSTANCE_TYPE(element, korvalin_video_get_type()))
    return {};
  return State(element).filter.Settings();
}

}  // namespace korvalin::gst
