// Feeds arbitrary bytes to the Sub Station Alpha reader as a file, from a private folder
// that holds a small bitmap "p.bmp" for picture events to find, then runs the track's
// clean-up and lookups.
#include "subtitles/readers/ssa_reader.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

namespace {

const std::string kBitmap = std::string(
    "BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x02\0\0\0\x02\0\0\0"
    "\x01\0\x18\0\0\0\0\0\x10\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    "\xFF\xFF\xFF\0\0\0\0\0\0\0\0\xFF\xFF\xFF\0\0",
    70);

// The process's own folder, made current, with the bitmap; the input is rewritten there.
const std::string& InputPath() {
  static const std::string path = [] {
    const auto folder =
        std::filesystem::temp_directory_path() / ("korvalin-fuzz-ssa-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    std::FILE* bitmap = std::fopen("p.bmp", "wb");
    if (bitmap) {
      std::fwrite(kBitmap.data(), 1, kBitmap.size(), bitmap);
      std::fclose(bitmap);
    }
    return (folder / "input.ssa").string();
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::FILE* file = std::fopen(InputPath().c_str(), "wb");
  if (!file) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);

  korvalin::SubtitleTrack track;
  const int result = korvalin::ReadSubStationAlpha(track, InputPath().c_str());
  if (result < -1 || result > 1) __builtin_trap();
  track.CloseOpenEnds();
  track.RemoveEmpty();
  for (int32_t t = -1000; t < 100000; t += 997) track.FindEntry(t, t + 40);
  return 0;
}
