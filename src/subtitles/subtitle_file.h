#pragma once

#include "base/std_file.h"

namespace korvalin {

// Opens a subtitle file for a reader: StdFile::Open (0 on success, 1 on failure), then, in
// text mode, steps over a UTF-8 byte order mark at the start so that the first line reads
// clean.
int OpenSubtitleFile(StdFile& file, const char* path, const char* mode);

}  // namespace korvalin
