#pragma once

#include <string>

#include "base/std_file.h"

namespace korvalin {

// Opens a subtitle file for a reader: StdFile::Open (0 on success, 1 on failure). A file saved
// as UTF-16 or UTF-32 reads as UTF-8 without its byte order mark, in either mode and with text
// mode's line ends as ever; in text mode a UTF-8 byte order mark is stepped over, so that the
// first line reads clean.
int OpenSubtitleFile(StdFile& file, const char* path, const char* mode);

// Every byte of an open file from its start, as the file's mode reads them. False when they
// cannot be read whole.
bool ReadWholeFile(StdFile& file, std::string* bytes);

// The whole file for readers that parse memory: its bytes, UTF-16 and UTF-32 text turned into
// UTF-8 as OpenSubtitleFile does (a UTF-8 byte order mark stays). False when it cannot be read.
bool ReadSubtitleText(const char* path, std::string* bytes);

}  // namespace korvalin
