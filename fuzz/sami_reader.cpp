// Feeds arbitrary bytes to the SAMI reader as a file, then runs the track's clean-up and
// lookups over whatever it read.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "subtitles/readers/sami_reader.h"

namespace {

// One file per fuzzing process, rewritten for every input.
const std::string& InputPath() {
  static const std::string path =
      "/tmp/korvalin-fuzz-sami_reader-" + std::to_string(getpid()) + ".smi";
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::FILE* file = std::fopen(InputPath().c_str(), "wb");
  if (!file) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);

  korvalin::SubtitleTrack track;
  track.preferredLanguage.Assign(size % 2 ? "English" : "French");  // also a chosen stream
  const int result = korvalin::ReadSami(track, InputPath().c_str());
  if (result < -1 || result > 1) __builtin_trap();
  if (result == 0 && track.entries.IsEmpty()) __builtin_trap();
  if (!track.streamNames.IsEmpty() &&
      (track.streamIndex < 0 || static_cast<size_t>(track.streamIndex) >= track.streamNames.Count())) {
    __builtin_trap();
  }
  track.ConvertFramesToMs(25.0f);
  track.SortByStart();
  track.CloseOpenEnds();
  track.RemoveEmpty();
  for (const korvalin::SubtitleEntry* entry : track.entries) {
    if (entry->start >= entry->stop) __builtin_trap();  // RemoveEmpty's promise
  }
  for (int32_t t = -1000; t < 100000; t += 997) track.FindEntry(t, t + 40);
  return 0;
}
