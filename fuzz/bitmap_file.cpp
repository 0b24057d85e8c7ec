// libFuzzer target for LoadBitmapFile: any file content loads or is refused
// without reading or writing out of bounds, and a loaded picture is consistent. Loaded
// pictures of modest size also go through CropToContent, SmoothEdges and ScaleTo.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "render/picture.h"

namespace {

void Check(const korvalin::Picture& p) {
  if (p.width < 0 || p.height < 0) std::abort();
  if (p.pixels.size() != static_cast<std::size_t>(p.width) * static_cast<std::size_t>(p.height))
    std::abort();
}

// The input as a file: an anonymous memory file named through /proc.
int MemoryFile() {
  static const int fd = memfd_create("bitmap", 0);
  return fd;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const int fd = MemoryFile();
  if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
    std::abort();
  const std::string path = "/proc/self/fd/" + std::to_string(fd);
  korvalin::Picture picture;
  const int result = picture.LoadBitmapFile(path.c_str());
  Check(picture);
  korvalin::Picture fromBytes;
  if (fromBytes.LoadBitmapBytes(data, size) != result) std::abort();
  if (fromBytes.pixels != picture.pixels) std::abort();
  if (result != 0) {
    if (picture.HasPixels()) std::abort();
    return 0;
  }
  if (picture.pixels.size() > 4096) return 0;
  picture.SmoothEdges();
  Check(picture);
  picture.CropToContent();
  Check(picture);
  const int32_t w = size > 0 ? data[size - 1] % 64 : 1;
  const int32_t h = size > 1 ? data[size - 2] % 64 : 1;
  picture.ScaleTo(w, h);
  Check(picture);
  return 0;
}
