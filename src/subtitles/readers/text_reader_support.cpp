#include "subtitles/readers/text_reader_support.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "base/string_compare.h"
#include "platform/file_search.h"
#include "subtitles/line_reader.h"
#include "subtitles/subtitle_file.h"

namespace korvalin {

int BeginReading(SubtitleTrack& track, StdFile& file, const char* path, const char* mode,
                 const char* formatName) {
  track.Reset();
  if (!path || OpenSubtitleFile(file, path, mode) != 0) return -1;
  track.fileName.Assign(path);
  track.formatName.Assign(formatName);
  return 0;
}

int FinishReading(SubtitleTrack& track, StdFile& file, CleanUp steps) {
  file.Close();
  track.SortByStart();
  if (steps != CleanUp::kSort) track.CloseOpenEnds();
  if (steps == CleanUp::kSortCloseOpenEndsAndRemoveEmpty) track.RemoveEmpty();
  return track.entries.IsEmpty() ? 1 : 0;
}

LineInput::LineInput(StdFile& file, std::size_t bufferSize)
    : file_(file), size_(bufferSize), buffer_(std::make_unique<char[]>(bufferSize)) {}

bool LineInput::Next() {
  if (ReadLine(file_, buffer_.get(), size_) != 0) return false;
  RemoveLineFeed(buffer_.get());
  return true;
}

bool StartsWithNoCase(const char* text, std::string_view prefix) {
  const std::string_view whole(text ? text : "");
  return whole.size() >= prefix.size() && EqualsIgnoreCase(whole.substr(0, prefix.size()), prefix);
}

void RemoveBraceGroups(DynString& text) {
  DynString kept("");
  bool inBraces = false;
  for (const char* p = text.c_str(); *p != '\0'; ++p) {
    if (*p == '{') {
      inBraces = true;
    } else if (*p == '}') {
      inBraces = false;
    } else if (!inBraces) {
      kept.AppendChar(*p);
    }
  }
  text = std::move(kept);
}

std::string FindNamedFile(const char* name) {
  std::string path(name ? name : "");
  std::error_code error;
  if (path.empty() || std::filesystem::exists(path, error)) return path;
  std::replace(path.begin(), path.end(), '\\', '/');
  // Part by part, so that folders written in other letters are found as well.
  std::string found = path.front() == '/' ? "/" : "";
  for (std::size_t start = 0; start < path.size();) {
    std::size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    if (end > start) {
      if (!found.empty() && found.back() != '/') found += '/';
      found = platform::FindFileNoCase(found + path.substr(start, end - start));
    }
    start = end + 1;
  }
  return found;
}

}  // namespace korvalin
