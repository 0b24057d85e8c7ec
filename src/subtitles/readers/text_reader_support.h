#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "base/dyn_string.h"
#include "base/std_file.h"
#include "subtitles/subtitle_track.h"

namespace korvalin {

// The opening steps every reader shares: resets track, opens path in mode and names the
// track after the file and format, before anything is known about the content. 0, or -1
// when the file cannot be opened.
int BeginReading(SubtitleTrack& track, StdFile& file, const char* path, const char* mode,
                 const char* formatName);

// The track's clean-up steps a format calls for after reading; each includes those before.
enum class CleanUp { kSort, kSortAndCloseOpenEnds, kSortCloseOpenEndsAndRemoveEmpty };

// The closing steps every reader shares: closes the file, runs the clean-up steps, and
// gives 0 when the track holds entries, else 1.
int FinishReading(SubtitleTrack& track, StdFile& file, CleanUp steps);

// The line-by-line input of the readers with a fixed line buffer: a longer line arrives in
// pieces, each piece a line of its own; every line loses its trailing line feed.
class LineInput {
 public:
  LineInput(StdFile& file, std::size_t bufferSize);

  // False at the end of the input. A NUL byte at the start of a line reads as the end too.
  bool Next();
  char* line() { return buffer_.get(); }

 private:
  StdFile& file_;
  std::size_t size_;
  std::unique_ptr<char[]> buffer_;
};

// True when text begins with prefix, ASCII letters compared without regard to case.
bool StartsWithNoCase(const char* text, std::string_view prefix);

// Drops style codes: every run from "{" through the next "}" goes, an unclosed "{" takes
// the rest of the text with it, and a "}" outside braces goes too.
void RemoveBraceGroups(DynString& text);

// The file a subtitle file names (a picture, another subtitle file), written for Windows:
// the name itself when it exists, else the name with "\" read as "/" and each of its parts
// matched without regard to letter case.
std::string FindNamedFile(const char* name);

}  // namespace korvalin
