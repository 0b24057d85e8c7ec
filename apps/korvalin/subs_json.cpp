#include "korvalin/subs_json.h"

#include <cstdint>
#include <cstdio>

namespace korvalin::cli {
namespace {

std::string Quoted(std::string_view bytes) { return '"' + EscapeJsonBytes(bytes) + '"'; }

std::string Quoted(const DynString& text) {
  return Quoted(std::string_view(text.c_str(), text.Length()));
}

std::string PictureFields(const Picture& picture) {
  int64_t opaque = 0;
  int64_t sum = 0;
  for (uint8_t value : picture.pixels) {
    opaque += value != 0;
    sum += value;
  }
  return "\"width\":" + std::to_string(picture.width) +
         ",\"height\":" + std::to_string(picture.height) + ",\"opaque\":" +
         std::to_string(opaque) + ",\"sum\":" + std::to_string(sum);
}

}  // namespace

std::string EscapeJsonBytes(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"': out += "\\\""; continue;
      case '\\': out += "\\\\"; continue;
      case '\b': out += "\\b"; continue;
      case '\f': out += "\\f"; continue;
      case '\n': out += "\\n"; continue;
      case '\r': out += "\\r"; continue;
      case '\t': out += "\\t"; continue;
      default: break;
    }
    if (byte < 0x20 || byte >= 0x80) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
      out += escaped;
    } else {
      out += c;
    }
  }
  return out;
}

std::string TrackSummaryJson(const SubtitleTrack& track, int result) {
  std::string streams;
  for (const DynString* name : track.streamNames) {
    streams += (streams.empty() ? "" : ",") + Quoted(*name);
  }
  return "{\"result\":" + std::to_string(result) + ",\"format\":" + Quoted(track.formatName) +
         ",\"file\":" + Quoted(track.fileName) + ",\"fileDelay\":" +
         std::to_string(track.fileDelay) + ",\"streams\":[" + streams + "],\"streamIndex\":" +
         std::to_string(track.streamIndex) + ",\"framesPending\":" +
         (track.framesPending ? "true" : "false") +
         ",\"entries\":" + std::to_string(track.entries.Count()) + "}";
}

std::string EntryJson(const SubtitleEntry& entry) {
  std::string line =
      "{\"start\":" + std::to_string(entry.start) + ",\"stop\":" + std::to_string(entry.stop);
  if (entry.kind == SubtitleEntryKind::Picture && entry.picture) {
    return line + ",\"kind\":\"picture\"," + PictureFields(*entry.picture) + "}";
  }
  return line + ",\"kind\":\"text\",\"text\":" + Quoted(entry.text) + "}";
}

}  // namespace korvalin::cli
