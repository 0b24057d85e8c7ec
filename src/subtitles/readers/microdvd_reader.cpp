#include "subtitles/readers/microdvd_reader.h"

#include <memory>

#include "subtitles/readers/text_reader_support.h"
#include "subtitles/time_scanners.h"
#include "base/number_scan.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 1024;

class MicroDvdParser {
 public:
  MicroDvdParser(SubtitleTrack& track, StdFile& file) : track_(track), input_(file, kLineSize) {}

  // 0 at the normal end of the file, -1 at the first line without two frame groups.
  int ReadLines() {
    while (input_.Next()) {
      const char* cursor = input_.line();
      if (*cursor == '\0' || StartsWithNoCase(cursor, "{DEFAULT}")) continue;
      const int32_t start = ScanFrameNumber(cursor);
      if (start == -1) return -1;
      const int32_t stop = ScanFrameNumber(cursor);
      if (stop == -1) return -1;
      if (IsFrameRateLine(start, stop)) {
        ScanFloat(cursor, &frameRate_);  // a failed scan leaves the rate at 0
        continue;
      }
      track_.AddEntry(std::make_unique<SubtitleEntry>(start, stop, TextOf(cursor).c_str()));
    }
    return 0;
  }

  float frameRate() const { return frameRate_; }

 private:
  // Only a leading {0|1}{0|1} line, before any subtitle and any rate, states the rate.
  bool IsFrameRateLine(int32_t start, int32_t stop) const {
    return frameRate_ == 0 && (start == 0 || start == 1) && (stop == 0 || stop == 1) &&
           track_.entries.IsEmpty();
  }

  // "|" breaks lines; style codes in braces are dropped, not applied.
  static DynString TextOf(const char* rest) {
    DynString text(rest);
    text.Replace("|", "\n", DynString::kReplaceAll);
    RemoveBraceGroups(text);
    return text;
  }

  SubtitleTrack& track_;
  LineInput input_;
  float frameRate_ = 0;
};

}  // namespace

int ReadMicroDvd(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "MicroDVD") != 0) return -1;
  track.framesPending = true;
  MicroDvdParser parser(track, file);
  if (parser.ReadLines() != 0) return -1;
  if (parser.frameRate() > 0) track.ConvertFramesToMs(parser.frameRate());
  // Empty texts and stops before starts stay: they draw nothing and never match.
  return FinishReading(track, file, CleanUp::kSortAndCloseOpenEnds);
}

}  // namespace korvalin
