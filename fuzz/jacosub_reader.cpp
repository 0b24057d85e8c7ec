// Feeds arbitrary bytes to the JACOsub reader as a file, then runs the track's clean-up and
// lookups over whatever it read.
#include "subtitles/readers/jacosub_reader.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

// One file per fuzzing process, rewritten for every input.
const std::string& InputPath() {
  static const std::string path = "/tmp/korvalin-fuzz-jacosub-" + std::to_string(getpid()) + ".js";
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::FILE* file = std::fopen(InputPath().c_str(), "wb");
  if (!file) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);

  korvalin::SubtitleTrack track;
  const int result = korvalin::ReadJacoSub(track, InputPath().c_str());
  if (result < -1 || result > 1) __builtin_trap();
  track.CloseOpenEnds();
  track.RemoveEmpty();
  for (int32_t t = -1000; t < 100000; t += 997) track.FindEntry(t, t + 40);
  return 0;
}
