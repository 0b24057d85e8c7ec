#include "subtitles/readers/jacosub_reader.h"

#include <cstring>
#include <memory>

#include "subtitles/readers/text_reader_support.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 2048;

// The text of a line with its codes worked out: "\n" breaks the line, "~" is a hard space,
// "\C" and "\F" drop with their one-character argument, any other escaped letter (bold,
// italics, ...) drops, "\\", "\{" and "\~" stand for themselves, "{...}" is a comment.
DynString DecodeText(const char* codes) {
  DynString text("");
  bool copying = true;
  for (const char* p = codes; *p != '\0'; ++p) {
    if (*p == '{') {
      copying = false;
    } else if (*p == '}') {
      copying = true;
    } else if (!copying) {
      continue;
    } else if (*p == '~') {
      text.AppendChar(' ');
    } else if (*p != '\\') {
      text.AppendChar(*p);
    } else if (*++p == '\0') {
      break;  // a backslash that ends the line escapes nothing
    } else if (*p == 'n') {
      text.AppendChar('\n');
    } else if (*p == '\\' || *p == '{' || *p == '~') {
      text.AppendChar(*p);
    } else if ((*p == 'C' || *p == 'F') && p[1] != '\0') {
      ++p;
    }
  }
  return text;
}

class JacoSubParser {
 public:
  JacoSubParser(SubtitleTrack& track, StdFile& file) : track_(track), input_(file, kLineSize) {}

  // 0 at the normal end of the file, -1 at the first line that does not split or scan.
  int ReadLines() {
    while (input_.Next()) {
      char* line = input_.line();
      if (line[0] == '\0' || line[0] == '#') continue;  // header directives and comments
      if (ReadSubtitle(line) != 0) return -1;
    }
    return 0;
  }

 private:
  // Fields: start, stop, a directive (style, position) that is not used, and the text.
  int ReadSubtitle(char* line) {
    char* fields[4] = {line, nullptr, nullptr, nullptr};
    for (int k = 1; k < 4; ++k) {
      char* space = std::strchr(fields[k - 1], ' ');
      if (!space) return -1;
      *space = '\0';
      fields[k] = space + 1;
    }
    const int32_t start = ScanDotCentisTime(fields[0]);
    const int32_t stop = ScanDotCentisTime(fields[1]);
    if (start == -1 || stop == -1) return -1;
    track_.AddEntry(std::make_unique<SubtitleEntry>(start, stop, DecodeText(fields[3]).c_str()));
    return 0;
  }

  SubtitleTrack& track_;
  LineInput input_;
};

}  // namespace

int ReadJacoSub(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "JACOsub") != 0) return -1;
  JacoSubParser parser(track, file);
  if (parser.ReadLines() != 0) return -1;
  return FinishReading(track, file, CleanUp::kSort);
}

}  // namespace korvalin
