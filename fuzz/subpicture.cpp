// libFuzzer target for ReadSubpicture: the input poses as a VobSub ".sub" file
// whose first unit starts at offset 0. Whatever the bytes, decoding stays inside the
// assembled unit and the picture, and the picture is consistent.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "base/std_file.h"
#include "render/subpicture_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  korvalin::StdFile file;
  if (file.OpenMemory(data, size, "rb") != 0) return 0;
  korvalin::LumaPalette palette;
  for (std::size_t i = 0; i < palette.luma.size(); ++i)
    palette.luma[i] = static_cast<uint8_t>(16 * i + 15);
  palette.read = true;
  korvalin::Picture picture;
  int32_t duration = -1;
  const int result = korvalin::ReadSubpicture(picture, duration, 0, file, palette);
  if (result != 0 && result != -1) std::abort();
  if (duration < 0) std::abort();
  if (picture.width < 0 || picture.height < 0 || picture.width > 4096 || picture.height > 4096)
    std::abort();
  if (picture.pixels.size() !=
      static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height))
    std::abort();
  return 0;
}
