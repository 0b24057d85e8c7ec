#pragma once

#include <string>

#include "subtitles/subtitle_track.h"

namespace korvalin::testing {

// The track's entries as "start-stop:text|", line feeds shown as "/" and pictures as
// "[picture WxH]", so that a whole read compares in one expectation.
inline std::string DescribeEntries(const SubtitleTrack& track) {
  std::string out;
  for (const SubtitleEntry* e : track.entries) {
    std::string text = e->text.c_str();
    for (char& c : text) c = c == '\n' ? '/' : c;
    if (e->kind == SubtitleEntryKind::Picture) {
      text = "[picture " + std::to_string(e->picture ? e->picture->width : -1) + "x" +
             std::to_string(e->picture ? e->picture->height : -1) + "]";
    }
    out += std::to_string(e->start) + "-" + std::to_string(e->stop) + ":" + text + "|";
  }
  return out;
}

}  // namespace korvalin::testing
