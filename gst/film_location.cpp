#include "gst/film_location.h"

namespace korvalin::gst {

namespace {

std::string LocalPath(const gchar* uri) {
  if (uri == nullptr) return "";
  gchar* path = g_filename_from_uri(uri, nullptr, nullptr);  // null for other schemes
  std::string result = path ? path : "";
  g_free(path);
  return result;
}

std::string AskUpstream(GstPad* sinkPad) {
  GstQuery* query = gst_query_new_uri();
  std::string path;
  if (gst_pad_peer_query(sinkPad, query)) {
    gchar* uri = nullptr;
    gst_query_parse_uri(query, &uri);
    path = LocalPath(uri);
    g_free(uri);
  }
  gst_query_unref(query);
  return path;
}

// A player such as playbin knows what it plays even when its decoders do not answer.
std::string AskEnclosingPlayer(GstPad* sinkPad) {
  GstObject* object = gst_pad_get_parent(sinkPad);
  std::string path;
  while (object != nullptr && path.empty()) {
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(object), "current-uri")) {
      gchar* uri = nullptr;
      g_object_get(object, "current-uri", &uri, nullptr);
      path = LocalPath(uri);
      g_free(uri);
    }
    GstObject* parent = gst_object_get_parent(object);
    gst_object_unref(object);
    object = parent;
  }
  if (object != nullptr) gst_object_unref(object);
  return path;
}

}  // namespace

std::string FilmFileUpstream(GstPad* sinkPad) {
  std::string path = AskUpstream(sinkPad);
  return path.empty() ? AskEnclosingPlayer(sinkPad) : path;
}

double FilmDurationUpstream(GstPad* sinkPad) {
  gint64 duration = -1;
  if (!gst_pad_peer_query_duration(sinkPad, GST_FORMAT_TIME, &duration) || duration <= 0)
    return 0;
  return static_cast<double>(duration) / GST_SECOND;
}

}  // namespace korvalin::gst
