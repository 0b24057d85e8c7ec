// `korvalinvideosink` and `korvalinaudiosink`: bins that put our element in front of the best
// real sink, so a player that picks its sinks by rank gets Korvalin without knowing of it.
#include "gst/sink_bins.h"

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace korvalin::gst {
namespace {

GST_DEBUG_CATEGORY_STATIC(sink_bin_debug);
#define GST_CAT_DEFAULT sink_bin_debug

// What tells the two bins apart.
struct SinkKind {
  const char* typeName;
  const char* factoryName;
  const char* longName;
  const char* klass;
  const char* description;
  const char* caps;  // of the "sink" pad
  // Elements in stream order before the real sink. No resampler after our audio element:
  // it would turn the raised rate it declares back into the film's.
  std::array<const char*, 4> chain;
  GstElementFactoryListType media;
  const char* innerSinkVariable;  // names the real sink's factory, for headless playback
};

constexpr SinkKind kVideoKind = {
    "KorvalinVideoSink",
    "korvalinvideosink",
    "Korvalin video sink",
    "Sink/Video",
    "Frames the picture and draws subtitles and a clock, then shows it on the best video sink",
    "video/x-raw",
    {"videoconvert", "korvalin", "videoconvert", nullptr},
    GST_ELEMENT_FACTORY_TYPE_MEDIA_VIDEO,
    kInnerVideoSinkVariable,
};

constexpr SinkKind kAudioKind = {
    "KorvalinAudioSink",
    "korvalinaudiosink",
    "Korvalin audio sink",
    "Sink/Audio",
    "Plays the sound at the film's raised rate on the best audio sink",
    "audio/x-raw",
    {"audioconvert", "audioresample", "korvalinaudio", "audioconvert"},
    GST_ELEMENT_FACTORY_TYPE_MEDIA_AUDIO,
    kInnerAudioSinkVariable,
};

// The sink that always opens: the last one tried.
constexpr const char* kLastResortSink = "fakesink";

struct SinkBin {
  GstBin parent;
  GstElement* chainEnd;   // owned by the bin; null when the chain could not be made
  GstElement* innerSink;  // owned by the bin; null until the first NULL -> READY
  const char* missing;    // the chain's factory that could not be made or linked, or null
  gint64 tsOffset;        // handed to the inner sink
};

// autovideosink and autoaudiosink set "ts-offset" on the sink they pick, which is us once our
// rank is raised.
enum Property { kPropertyTsOffset = 1 };
constexpr const char* kTsOffset = "ts-offset";

struct SinkBinClass {
  GstBinClass parent;
  const SinkKind* kind;
};

GstElementClass* binClass = nullptr;  // the parent class of both bins

const SinkKind& KindOf(gpointer g_class) {
  return *static_cast<SinkBinClass*>(g_class)->kind;
}

const SinkKind& KindOf(SinkBin* self) {
  return KindOf(G_OBJECT_GET_CLASS(self));
}

// A name that would bring one of these bins back inside itself: our own features, and
// autodetect's bins, which choose by rank too.
bool Excluded(std::string_view name) {
  return name.empty() || name.starts_with("korvalin") || name.starts_with("auto");
}

// The factories worth a try, best first: the one the environment names, the real sinks of
// the bin's media by rank, then the last resort.
std::vector<std::string> Candidates(const SinkKind& kind) {
  std::vector<std::string> names;
  if (const char* named = std::getenv(kind.innerSinkVariable); named && !Excluded(named))
    names.emplace_back(named);
  GList* factories = gst_element_factory_list_get_elements(
      GST_ELEMENT_FACTORY_TYPE_SINK | kind.media, GST_RANK_MARGINAL);
  factories = g_list_sort(factories, gst_plugin_feature_rank_compare_func);
  for (GList* item = factories; item != nullptr; item = item->next) {
    const char* name = gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(item->data));
    if (!Excluded(name)) names.emplace_back(name);
  }
  gst_plugin_feature_list_free(factories);
  names.emplace_back(kLastResortSink);
  return names;
}

// The sink made and brought to READY on a bus of its own, so a sink that cannot open its
// display fails quietly instead of posting an error that would stop the whole pipeline.
GstElement* OpenedSink(const std::string& factory) {
  GstElement* sink = gst_element_factory_make(factory.c_str(), nullptr);
  if (sink == nullptr) return nullptr;
  gst_object_ref_sink(sink);
  GstBus* quiet = gst_bus_new();
  gst_bus_set_flushing(quiet, TRUE);
  gst_element_set_bus(sink, quiet);
  const bool opened = gst_element_set_state(sink, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
  if (!opened) gst_element_set_state(sink, GST_STATE_NULL);
  gst_element_set_bus(sink, nullptr);
  gst_object_unref(quiet);
  if (opened) return sink;
  GST_INFO("%s does not open", factory.c_str());
  gst_object_unref(sink);
  return nullptr;
}

void PassTsOffset(SinkBin* self) {
  GST_OBJECT_LOCK(self);
  const gint64 offset = self->tsOffset;
  GST_OBJECT_UNLOCK(self);
  if (self->innerSink != nullptr &&
      g_object_class_find_property(G_OBJECT_GET_CLASS(self->innerSink), kTsOffset) != nullptr)
    g_object_set(self->innerSink, kTsOffset, offset, nullptr);
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
  SinkBin* self = reinterpret_cast<SinkBin*>(object);
  if (id != kPropertyTsOffset) {
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    return;
  }
  GST_OBJECT_LOCK(self);
  self->tsOffset = g_value_get_int64(value);
  GST_OBJECT_UNLOCK(self);
  PassTsOffset(self);
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
  SinkBin* self = reinterpret_cast<SinkBin*>(object);
  if (id != kPropertyTsOffset) {
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    return;
  }
  GST_OBJECT_LOCK(self);
  g_value_set_int64(value, self->tsOffset);
  GST_OBJECT_UNLOCK(self);
}

// Adds the first candidate that opens and takes the chain's output.
GstElement* AddInnerSink(SinkBin* self) {
  const std::vector<std::string> candidates = Candidates(KindOf(self));
  for (const std::string& factory : candidates) {
    GstElement* sink = OpenedSink(factory);
    if (sink == nullptr) continue;
    // In place of a real sink, the last resort plays in time as one would.
    if (&factory == &candidates.back()) g_object_set(sink, "sync", TRUE, nullptr);
    gst_bin_add(GST_BIN(self), sink);
    gst_object_unref(sink);  // the bin holds it now
    if (gst_element_link(self->chainEnd, sink)) {
      GST_INFO_OBJECT(self, "playing on %s", factory.c_str());
      return sink;
    }
    gst_element_set_state(sink, GST_STATE_NULL);
    gst_bin_remove(GST_BIN(self), sink);
  }
  return nullptr;
}

GstStateChangeReturn ChangeState(GstElement* element, GstStateChange transition) {
  SinkBin* self = reinterpret_cast<SinkBin*>(element);
  if (transition == GST_STATE_CHANGE_NULL_TO_READY) {
    if (self->missing != nullptr) {
      GST_ELEMENT_ERROR(element, CORE, MISSING_PLUGIN,
                        ("The element \"%s\" is missing or does not fit.", self->missing),
                        (nullptr));
      return GST_STATE_CHANGE_FAILURE;
    }
    if (self->innerSink == nullptr) {
      self->innerSink = AddInnerSink(self);
      PassTsOffset(self);
    }
    if (self->innerSink == nullptr) {
      GST_ELEMENT_ERROR(element, RESOURCE, OPEN_WRITE, ("No sink could be opened."), (nullptr));
      return GST_STATE_CHANGE_FAILURE;
    }
  }
  return binClass->change_state(element, transition);
}

// Makes the chain's elements; on a missing factory nothing is kept and its name returned.
const char* MakeChain(const SinkKind& kind, std::vector<GstElement*>* chain) {
  for (const char* factory : kind.chain) {
    if (factory == nullptr) break;
    GstElement* element = gst_element_factory_make(factory, nullptr);
    if (element == nullptr) {
      for (GstElement* made : *chain) gst_object_unref(gst_object_ref_sink(made));
      chain->clear();
      return factory;
    }
    chain->push_back(element);
  }
  return nullptr;
}

// The chain in the bin, linked in order; the factory of an element that does not link to
// the one before it, or null.
const char* AddChain(const SinkKind& kind, GstBin* bin, const std::vector<GstElement*>& chain) {
  for (GstElement* element : chain) gst_bin_add(bin, element);
  for (size_t i = 1; i < chain.size(); ++i) {
    if (!gst_element_link(chain[i - 1], chain[i])) return kind.chain[i];
  }
  return nullptr;
}

void AddGhostPad(GstElement* bin, GstElement* first) {
  GstPadTemplate* pad_template =
      gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(bin), "sink");
  GstPad* pad;
  if (first != nullptr) {
    GstPad* target = gst_element_get_static_pad(first, "sink");
    pad = gst_ghost_pad_new_from_template("sink", target, pad_template);
    gst_object_unref(target);
  } else {
    pad = gst_ghost_pad_new_no_target_from_template("sink", pad_template);
  }
  gst_element_add_pad(bin, pad);
}

void InstanceInit(GTypeInstance* instance, gpointer g_class) {
  SinkBin* self = reinterpret_cast<SinkBin*>(instance);
  const SinkKind& kind = KindOf(g_class);
  // A sink from the start, as its inner sink only comes at READY.
  gst_bin_set_suppressed_flags(GST_BIN(self),
                               GstElementFlags(GST_ELEMENT_FLAG_SOURCE | GST_ELEMENT_FLAG_SINK));
  GST_OBJECT_FLAG_SET(self, GST_ELEMENT_FLAG_SINK);
  std::vector<GstElement*> chain;
  self->missing = MakeChain(kind, &chain);
  if (self->missing == nullptr) self->missing = AddChain(kind, GST_BIN(self), chain);
  const bool usable = self->missing == nullptr;
  self->chainEnd = usable ? chain.back() : nullptr;
  AddGhostPad(GST_ELEMENT(self), usable ? chain.front() : nullptr);
}

void ClassInit(gpointer g_class, gpointer data) {
  const SinkKind& kind = *static_cast<const SinkKind*>(data);
  reinterpret_cast<SinkBinClass*>(g_class)->kind = &kind;
  binClass = GST_ELEMENT_CLASS(g_type_class_peek_parent(g_class));
  GstElementClass* element_class = GST_ELEMENT_CLASS(g_class);
  gst_element_class_set_static_metadata(element_class, kind.longName, kind.klass, kind.description,
                                        "Korvalin developers");
  GstCaps* caps = gst_caps_from_string(kind.caps);
  gst_element_class_add_pad_template(
      element_class, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
  gst_caps_unref(caps);
  element_class->change_state = ChangeState;
  GObjectClass* object_class = G_OBJECT_CLASS(g_class);
  object_class->set_property = SetProperty;
  object_class->get_property = GetProperty;
  g_object_class_install_property(
      object_class, kPropertyTsOffset,
      g_param_spec_int64(kTsOffset, "TS Offset", "Timestamp offset of the real sink in ns",
                         G_MININT64, G_MAXINT64, 0,
                         GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
}

// A second copy of this code in the process (the plugin file beside a static registration)
// finds the type already there.
GType SinkBinType(const SinkKind& kind) {
  if (const GType known = g_type_from_name(kind.typeName)) return known;
  const GTypeInfo info = {sizeof(SinkBinClass), nullptr, nullptr,      ClassInit, nullptr, &kind,
                          sizeof(SinkBin),      0,       InstanceInit, nullptr};
  return g_type_register_static(GST_TYPE_BIN, kind.typeName, &info, GTypeFlags(0));
}

}  // namespace

gboolean RegisterSinkBins(GstPlugin* plugin) {
  GST_DEBUG_CATEGORY_INIT(sink_bin_debug, "korvalinsinkbin", 0, "Korvalin sink bins");
  for (const SinkKind* kind : {&kVideoKind, &kAudioKind}) {
    if (!gst_element_register(plugin, kind->factoryName, GST_RANK_NONE, SinkBinType(*kind)))
      return FALSE;
  }
  return TRUE;
}

}  // namespace korvalin::gst
