// Runs the line readers over arbitrary bytes in both file modes, and every time scanner, the
// frame-number scanner and the search helpers over each line read.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/std_file.h"
#include "base/string_search.h"
#include "subtitles/language_name.h"
#include "subtitles/line_reader.h"
#include "subtitles/time_scanners.h"

namespace {

void ScanLine(const char* line) {
  korvalin::ScanBracketedTime(line);
  korvalin::ScanCommaMillisTime(line);
  korvalin::ScanDotCentisTime(line);
  korvalin::ScanColonCentisTime(line);
  korvalin::ScanPlainTime(line);
  korvalin::ScanColonMillisTime(line);
  for (const char* cursor = line; *cursor != '\0';) {
    if (korvalin::ScanFrameNumber(cursor) < 0) ++cursor;
  }
  korvalin::FindChar(line, '}', 1);
  korvalin::FindText(line, " --> ", 0);
  korvalin::CompareTextNoCase(line, "[INFORMATION]");
  korvalin::LanguageNameFromCode(line);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (const char* mode : {"rt", "rb"}) {
    korvalin::StdFile file;
    if (file.OpenMemory(data, size, mode) != 0) return 0;
    char buffer[64];  // small, so that long lines come in pieces
    while (korvalin::ReadLine(file, buffer, sizeof buffer) == 0) {
      if (std::strlen(buffer) >= sizeof buffer) __builtin_trap();
      korvalin::RemoveLineFeed(buffer);
      ScanLine(buffer);
    }
    file.Seek(0, SEEK_SET);
    korvalin::DynString line;
    while (korvalin::ReadLineString(file, line) == 0) {
      korvalin::RemoveLineFeed(line);
      line.TrimLeft();
      line.TrimRight();
      line.Replace("  ", " ", korvalin::DynString::kReplaceAll | korvalin::DynString::kReplaceRepeat);
      ScanLine(line.c_str());
    }
  }
  return 0;
}
