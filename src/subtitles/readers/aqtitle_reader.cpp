#include "subtitles/readers/aqtitle_reader.h"

#include <cstring>
#include <memory>

#include "base/std_file.h"
#include "subtitles/line_reader.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/subtitle_file.h"
#include "base/number_scan.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 1024;
constexpr char kMarker[] = "-->> ";
constexpr std::size_t kMarkerLength = sizeof kMarker - 1;

// The frame number after the marker, or false when the line is no marker.
bool ScanMarker(const char* line, int32_t* frame) {
  return std::strncmp(line, kMarker, kMarkerLength) == 0 && ScanInt(line + kMarkerLength, frame);
}

class AqTitleParser {
 public:
  AqTitleParser(SubtitleTrack& track, StdFile& file) : track_(track), file_(file) {}

  // 0 at the normal end of the file, -1 at the first line that breaks the format.
  int ReadBlocks() {
    char line[kLineSize];
    while (ReadLine(file_, line, kLineSize) == 0) {
      RemoveLineFeed(line);
      if (line[0] == '\0') continue;
      int32_t frame = 0;
      DynString text;
      if (!ScanMarker(line, &frame) || !ReadText(&text)) return -1;
      AddBlock(frame, text);
    }
    return 0;
  }

  float frameRate() const { return frameRate_; }

 private:
  // The next two lines, whatever they hold, joined and trimmed.
  bool ReadText(DynString* text) {
    char line[kLineSize];
    text->Assign("");
    for (int n = 0; n < 2; ++n) {
      if (ReadLine(file_, line, kLineSize) != 0) return false;
      text->Append(line);
    }
    text->TrimRight();
    text->TrimLeft();
    return true;
  }

  // A block at frame 0 before any entry carries the frame rate instead of a subtitle.
  void AddBlock(int32_t frame, const DynString& text) {
    if (frame == 0 && track_.entries.IsEmpty()) {
      ScanFloat(text.c_str(), &frameRate_);  // an unreadable rate leaves it unset
      return;
    }
    track_.AddEntry(std::make_unique<SubtitleEntry>(frame, 0, text.c_str()));
  }

  SubtitleTrack& track_;
  StdFile& file_;
  float frameRate_ = 0;
};

}  // namespace

int ReadAqTitle(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "AqTitle") != 0) return -1;
  track.framesPending = true;
  AqTitleParser parser(track, file);
  if (parser.ReadBlocks() != 0) return -1;
  if (parser.frameRate() > 0) track.ConvertFramesToMs(parser.frameRate());
  return FinishReading(track, file, CleanUp::kSortCloseOpenEndsAndRemoveEmpty);
}

}  // namespace korvalin
