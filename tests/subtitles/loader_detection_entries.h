#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>

#include "subtitles/subtitle_track.h"
#include "support/temp_folder.h"

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

inline std::string StreamNames(const SubtitleTrack& track) {
  std::string names;
  for (const DynString* name : track.streamNames) names += std::string(name->c_str()) + "|";
  return names;
}

// One file's bytes and what a reader must make of them. An accepted read whose times are
// still frame numbers describes its entries with a leading "frames ".
struct ReaderCase {
  const char* name;
  std::string bytes;
  int result;
  std::string entries;
  int32_t fileDelay = 0;
};

// Reads each case written as fileName and checks the result, the entries, the file delay
// and the format name the reader gives the track.
inline void ExpectReaderCases(int (*read)(SubtitleTrack&, const char*), const char* format,
                              const char* fileName, std::span<const ReaderCase> cases) {
  const TempFolder folder;
  for (const ReaderCase& c : cases) {
    const std::string path = folder.Write(fileName, c.bytes);
    SubtitleTrack track;
    EXPECT_EQ(read(track, path.c_str()), c.result) << c.name;
    const bool frames = c.result == 0 && track.framesPending;
    EXPECT_EQ((frames ? "frames " : "") + DescribeEntries(track), c.entries) << c.name;
    EXPECT_EQ(track.fileDelay, c.fileDelay) << c.name;
    EXPECT_EQ(track.formatName, format) << c.name;
  }
}

}  // namespace korvalin::testing
