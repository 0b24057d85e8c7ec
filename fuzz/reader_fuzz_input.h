#pragma once

// The shared body of the subtitle reader fuzz targets: the input becomes a file (one per
// fuzzing process, rewritten for every input) that the reader reads, then the track's
// clean-up and lookups run over whatever it read, checking the promises the track keeps.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "subtitles/subtitle_track.h"

namespace korvalin::fuzz {

using SubtitleReader = int (*)(SubtitleTrack&, const char*);

// Writes the input to this process's file for the extension and returns its path, or an
// empty string when the file cannot be written.
inline std::string WriteFuzzInput(const uint8_t* data, size_t size, const char* extension) {
  const std::string path = "/tmp/korvalin-fuzz-" + std::to_string(getpid()) + "." + extension;
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return {};
  std::fwrite(data, 1, size, file);
  std::fclose(file);
  return path;
}

// The track's lookups over a whole film's worth of times.
inline void LookUpAll(SubtitleTrack& track) {
  for (int32_t t = -1000; t < 100000; t += 997) track.FindEntry(t, t + 40);
}

inline int FuzzReader(const uint8_t* data, size_t size, const char* extension, SubtitleReader read,
                      const char* preferredLanguage = "") {
  const std::string path = WriteFuzzInput(data, size, extension);
  if (path.empty()) return 0;

  SubtitleTrack track;
  track.preferredLanguage.Assign(preferredLanguage);
  const int result = read(track, path.c_str());
  if (result < -1 || result > 1) __builtin_trap();
  if (result == 0 && track.entries.IsEmpty()) __builtin_trap();
  if (!track.streamNames.IsEmpty() &&
      (track.streamIndex < 0 ||
       static_cast<size_t>(track.streamIndex) >= track.streamNames.Count())) {
    __builtin_trap();
  }
  track.ConvertFramesToMs(25.0f);
  track.SortByStart();
  track.CloseOpenEnds();
  track.RemoveEmpty();
  for (const SubtitleEntry* entry : track.entries) {
    if (entry->start >= entry->stop) __builtin_trap();  // RemoveEmpty's promise
  }
  LookUpAll(track);
  return 0;
}

}  // namespace korvalin::fuzz
