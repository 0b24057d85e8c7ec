#pragma once

#include "base/dyn_string.h"
#include "base/ptr_array.h"

namespace korvalin {

// Discovery of the subtitle files that belong to a video, by file names only. Paths are
// POSIX; "\" and "/" both separate, and paths are built with "/".

// Appends to files, in order and without duplicates, the candidates for videoPath along
// searchPath (elements separated by ";", an empty one meaning the video's folder). Returns 0.
int FindSubtitleFiles(OwningPtrArray<DynString>& files, const char* searchPath,
                      const char* videoPath);

// The search-path element made into an absolute folder ending in "/", relative to base;
// empty when it cannot be (relative with no base, or climbing above "/").
DynString ResolveDirectory(const char* base, const char* element);

// Appends the matches of name + each extension, then name.*, then name-*; returns the count.
std::size_t AddCandidates(OwningPtrArray<DynString>& files, const DynString& folder,
                          const char* name);

// Appends folder + name for every readable file of folder matching the wildcard pattern.
void AddMatchingFiles(OwningPtrArray<DynString>& files, const DynString& folder,
                      const char* pattern);

}  // namespace korvalin
