#include "subtitles/readers/subrip_reader.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "base/std_file.h"
#include "subtitles/line_reader.h"
#include "subtitles/subtitle_file.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 1024;
constexpr char kArrow[] = " --> ";

class SubRipParser {
 public:
  SubRipParser(SubtitleTrack& track, StdFile& file) : track_(track), file_(file) {}

  // 0 at the normal end of the file, -1 at the first block that is not SubRip.
  int ReadBlocks() {
    while (true) {
      if (!NextNonBlankLine()) return 0;
      if (std::strtol(line_, nullptr, 10) == 0) return -1;  // atol without its overflow
      if (!NextLine()) return -1;
      int32_t start = 0;
      int32_t stop = 0;
      if (!ScanTimeLine(&start, &stop)) return -1;
      track_.AddEntry(std::make_unique<SubtitleEntry>(start, stop, ReadText().c_str()));
    }
  }

 private:
  bool NextLine() {
    if (ReadLine(file_, line_, kLineSize) != 0) return false;
    RemoveLineFeed(line_);
    return true;
  }

  bool NextNonBlankLine() {
    while (NextLine()) {
      if (line_[0] != '\0') return true;
    }
    return false;
  }

  bool ScanTimeLine(int32_t* start, int32_t* stop) {
    char* arrow = std::strstr(line_, kArrow);
    if (!arrow) return false;
    *arrow = '\0';  // the start time ends at the arrow
    *start = ScanCommaMillisTime(line_);
    *stop = ScanCommaMillisTime(arrow + std::strlen(kArrow));
    return *start != -1 && *stop != -1;
  }

  // The text lines up to an empty line or the end of the file, joined by line feeds.
  DynString ReadText() {
    DynString text("");
    bool first = true;
    while (NextLine() && line_[0] != '\0') {
      if (!first) text.AppendChar('\n');
      text.Append(line_);
      first = false;
    }
    return text;
  }

  SubtitleTrack& track_;
  StdFile& file_;
  char line_[kLineSize] = {};
};

}  // namespace

int ReadSubRip(SubtitleTrack& track, const char* path) {
  track.Reset();
  StdFile file;
  if (!path || OpenSubtitleFile(file, path, "rt") != 0) return -1;
  track.fileName.Assign(path);
  track.formatName.Assign("SubRip");
  SubRipParser parser(track, file);
  if (parser.ReadBlocks() != 0) return -1;
  file.Close();
  track.SortByStart();
  return track.entries.IsEmpty() ? 1 : 0;
}

}  // namespace korvalin
