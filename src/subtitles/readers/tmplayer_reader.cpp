#include "subtitles/readers/tmplayer_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/std_file.h"
#include "subtitles/line_reader.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/subtitle_file.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 1024;
constexpr std::ptrdiff_t kLongestTime = 8;  // "hh:mm:ss"
constexpr int64_t kLongestShowMs = 4000;

char* FindThirdColon(char* line) {
  char* colon = std::strchr(line, ':');
  for (int n = 1; colon && n < 3; ++n) colon = std::strchr(colon + 1, ':');
  return colon;
}

// The earlier of the first "=" and the third ":", or null when neither is there.
char* FindSeparator(char* line) {
  char* equals = std::strchr(line, '=');
  char* colon = FindThirdColon(line);
  if (!equals) return colon;
  if (!colon) return equals;
  return std::min(equals, colon);
}

// Appends the subtitle of one non-empty line; false when the line is not TMPlayer.
bool ReadSubtitleLine(SubtitleTrack& track, char* line) {
  char* separator = FindSeparator(line);
  if (!separator || separator - line > kLongestTime) return false;
  char* text = separator + 1;
  *separator = '\0';  // the time ends at the separator
  const int32_t start = ScanPlainTime(line);
  if (start == -1) return false;
  for (char* bar = std::strchr(text, '|'); bar; bar = std::strchr(bar + 1, '|')) *bar = '\n';
  track.AddEntry(std::make_unique<SubtitleEntry>(start, 0, text));
  return true;
}

void LimitDurations(SubtitleTrack& track) {
  for (SubtitleEntry* entry : track.entries) {
    const int64_t latest = int64_t{entry->start} + kLongestShowMs;
    if (entry->stop > latest) entry->stop = static_cast<int32_t>(latest);
  }
}

}  // namespace

int ReadTmPlayer(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "TMPlayer") != 0) return -1;
  char line[kLineSize];
  while (ReadLine(file, line, kLineSize) == 0) {
    RemoveLineFeed(line);
    if (line[0] != '\0' && !ReadSubtitleLine(track, line)) return -1;
  }
  file.Close();
  track.SortByStart();
  track.CloseOpenEnds();
  LimitDurations(track);
  track.RemoveEmpty();
  return track.entries.IsEmpty() ? 1 : 0;
}

}  // namespace korvalin
