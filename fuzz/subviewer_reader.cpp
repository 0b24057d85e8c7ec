// Feeds arbitrary bytes to both SubViewer readers as a file, then runs the track's lookups
// over whatever each read.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "subtitles/readers/subviewer_v1_reader.h"
#include "subtitles/readers/subviewer_v2_reader.h"

namespace {

// One file per fuzzing process, rewritten for every input.
const std::string& InputPath() {
  static const std::string path =
      "/tmp/korvalin-fuzz-subviewer-" + std::to_string(getpid()) + ".sub";
  return path;
}

void Look(korvalin::SubtitleTrack& track) {
  for (int32_t t = -1000; t < 100000; t += 997) track.FindEntry(t, t + 40);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::FILE* file = std::fopen(InputPath().c_str(), "wb");
  if (!file) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);

  korvalin::SubtitleTrack track;
  const int version2 = korvalin::ReadSubViewer2(track, InputPath().c_str());
  if (version2 < -1 || version2 > 1) __builtin_trap();
  Look(track);

  // Version 1.0 rejects nothing it can open, and keeps only entries it can show.
  if (korvalin::ReadSubViewer1(track, InputPath().c_str()) == -1) __builtin_trap();
  for (const korvalin::SubtitleEntry* entry : track.entries) {
    if (entry->start >= entry->stop || entry->text.IsEmpty()) __builtin_trap();
  }
  Look(track);
  return 0;
}
