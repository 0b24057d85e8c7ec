#include "subtitles/readers/subviewer_v1_reader.h"

#include <cstdlib>
#include <memory>

#include "base/string_search.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 1024;

class SubViewer1Parser {
 public:
  SubViewer1Parser(SubtitleTrack& track, StdFile& file)
      : track_(track), first_(file, kLineSize), second_(file, kLineSize) {}

  // Pairs whose first line is neither a time nor the delay tag (the header's tags and their
  // values) pass silently; an unpaired last line is dropped.
  void ReadPairs() {
    while (first_.Next() && second_.Next()) {
      if (CompareTextNoCase(first_.line(), "[DELAY]") == 0) {
        const long seconds = std::strtol(second_.line(), nullptr, 10);
        track_.fileDelay = static_cast<int32_t>(static_cast<uint32_t>(seconds) * 1000u);
        continue;
      }
      const int32_t start = ScanBracketedTime(first_.line());
      if (start == -1) continue;
      DynString text(second_.line());
      text.Replace("|", "\n", DynString::kReplaceAll);
      track_.AddEntry(std::make_unique<SubtitleEntry>(start, 0, text.c_str()));
    }
  }

 private:
  SubtitleTrack& track_;
  LineInput first_;
  LineInput second_;
};

}  // namespace

int ReadSubViewer1(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "SubViewer 1.0") != 0) return -1;
  SubViewer1Parser(track, file).ReadPairs();
  // A time with an empty text clears the screen: it ends the subtitle before it and goes.
  return FinishReading(track, file, CleanUp::kSortCloseOpenEndsAndRemoveEmpty);
}

}  // namespace korvalin
