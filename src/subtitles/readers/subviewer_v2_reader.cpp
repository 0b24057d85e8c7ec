#include "subtitles/readers/subviewer_v2_reader.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "subtitles/readers/text_reader_support.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 1024;
constexpr char kDelayTag[] = "[DELAY]";

class SubViewer2Parser {
 public:
  SubViewer2Parser(SubtitleTrack& track, StdFile& file) : track_(track), input_(file, kLineSize) {}

  // 0 at the normal end of the file, -1 at the first line that is not SubViewer 2.0.
  int ReadSubtitles() {
    while (input_.Next()) {
      if (input_.line()[0] == '[') {
        ReadTag(input_.line());
        continue;
      }
      int32_t start = 0;
      int32_t stop = 0;
      if (!ScanTimeLine(input_.line(), &start, &stop)) return -1;
      if (!input_.Next()) return -1;
      DynString text(input_.line());
      text.Replace("[br]", "\n", DynString::kReplaceAll);
      // A subtitle counts only once its separator line is there.
      if (!input_.Next()) return 0;
      track_.AddEntry(std::make_unique<SubtitleEntry>(start, stop, text.c_str()));
    }
    return 0;
  }

 private:
  // Tags other than the delay (information block, section, colour, font) carry nothing.
  void ReadTag(const char* line) {
    if (!StartsWithNoCase(line, kDelayTag)) return;
    const long hundredths = std::strtol(line + std::strlen(kDelayTag), nullptr, 10);
    track_.fileDelay = static_cast<int32_t>(static_cast<uint32_t>(hundredths) * 10u);
  }

  static bool ScanTimeLine(char* line, int32_t* start, int32_t* stop) {
    char* comma = std::strchr(line, ',');
    if (!comma) return false;
    *comma = '\0';
    *start = ScanDotCentisTime(line);
    *stop = ScanDotCentisTime(comma + 1);
    return *start != -1 && *stop != -1;
  }

  SubtitleTrack& track_;
  LineInput input_;
};

}  // namespace

int ReadSubViewer2(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "SubViewer 2.0") != 0) return -1;
  SubViewer2Parser parser(track, file);
  if (parser.ReadSubtitles() != 0) return -1;
  return FinishReading(track, file, CleanUp::kSort);
}

}  // namespace korvalin
