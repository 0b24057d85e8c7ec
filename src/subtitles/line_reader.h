#pragma once

#include <cstddef>

#include "base/dyn_string.h"
#include "base/std_file.h"

namespace korvalin {

// Reads bytes until size - 1 are stored, input ends, a NUL (dropped) or a line feed (kept)
// is read, then terminates buffer. Returns 1 when nothing was stored (end of input), else 0.
// A longer line comes back in pieces. size must be at least 1.
int ReadLine(StdFile& file, char* buffer, std::size_t size);

// Like ReadLine without a length limit. Returns 1 when the string stays empty, else 0.
int ReadLineString(StdFile& file, DynString& line);

// Removes one trailing line feed, as every reader does with the lines it reads.
void RemoveLineFeed(char* line);
void RemoveLineFeed(DynString& line);

}  // namespace korvalin
