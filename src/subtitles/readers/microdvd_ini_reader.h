#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// INI files may name INI files; loads nested deeper than this fail, so that a file naming
// itself, or files naming each other, end instead of recursing without end.
inline constexpr int kMaxMicroDvdIniNesting = 4;

// Reads a MicroDVD-INI file, which names one subtitle file per language, and loads the file
// of the track's preferred language (else the first) with the loader; the languages become
// the track's streams. 0 loaded, -1 cannot open, not such a file, no complete language,
// the named file does not load, or nesting too deep.
int ReadMicroDvdIni(SubtitleTrack& track, const char* path);

}  // namespace korvalin
