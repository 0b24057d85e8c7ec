// Feeds arbitrary bytes to the Sub Station Alpha reader as a file, from a private folder
// that holds a small bitmap "p.bmp" for picture events to find.
#include "subtitles/readers/ssa_reader.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "reader_fuzz_input.h"

namespace {

const std::string kBitmap = std::string(
    "BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x02\0\0\0\x02\0\0\0"
    "\x01\0\x18\0\0\0\0\0\x10\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    "\xFF\xFF\xFF\0\0\0\0\0\0\0\0\xFF\xFF\xFF\0\0",
    70);

// Picture events name files relative to the current folder: make a private one current and
// put the bitmap there.
bool EnterFolderWithBitmap() {
  const auto folder =
      std::filesystem::temp_directory_path() / ("korvalin-fuzz-ssa-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  std::filesystem::current_path(folder);
  std::FILE* bitmap = std::fopen("p.bmp", "wb");
  if (!bitmap) return false;
  std::fwrite(kBitmap.data(), 1, kBitmap.size(), bitmap);
  std::fclose(bitmap);
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool ready = EnterFolderWithBitmap();
  if (!ready) return 0;
  return korvalin::fuzz::FuzzReader(data, size, "ssa", korvalin::ReadSubStationAlpha);
}
