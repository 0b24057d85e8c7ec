#include "subtitles/readers/subrip_reader.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "base/std_file.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 1024;
constexpr char kArrow[] = " --> ";

class SubRipParser {
 public:
  SubRipParser(SubtitleTrack& track, StdFile& file) : track_(track), input_(file, kLineSize) {}

  // 0 at the normal end of the file, -1 at the first block that is not SubRip.
  int ReadBlocks() {
    while (true) {
      if (!NextNonBlankLine()) return 0;
      if (std::strtol(input_.line(), nullptr, 10) == 0) return -1;  // atol without its overflow
      if (!input_.Next()) return -1;
      int32_t start = 0;
      int32_t stop = 0;
      if (!ScanTimeLine(input_.line(), &start, &stop)) return -1;
      track_.AddEntry(std::make_unique<SubtitleEntry>(start, stop, ReadText().c_str()));
    }
  }

 private:
  bool NextNonBlankLine() {
    while (input_.Next()) {
      if (input_.line()[0] != '\0') return true;
    }
    return false;
  }

  static bool ScanTimeLine(char* line, int32_t* start, int32_t* stop) {
    char* arrow = std::strstr(line, kArrow);
    if (!arrow) return false;
    *arrow = '\0';  // the start time ends at the arrow
    *start = ScanCommaMillisTime(line);
    *stop = ScanCommaMillisTime(arrow + std::strlen(kArrow));
    return *start != -1 && *stop != -1;
  }

  // The text lines up to an empty line or the end of the file, joined by line feeds.
  DynString ReadText() {
    DynString text("");
    bool first = true;
    while (input_.Next() && input_.line()[0] != '\0') {
      if (!first) text.AppendChar('\n');
      text.Append(input_.line());
      first = false;
    }
    return text;
  }

  SubtitleTrack& track_;
  LineInput input_;
};

}  // namespace

int ReadSubRip(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "SubRip") != 0) return -1;
  SubRipParser parser(track, file);
  if (parser.ReadBlocks() != 0) return -1;
  return FinishReading(track, file, CleanUp::kSort);
}

}  // namespace korvalin
