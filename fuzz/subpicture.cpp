// libFuzzer target for ReadSubpicture: the input poses as a VobSub ".sub" file
// whose first unit starts at offset 0. Whatever the bytes, decoding stays inside the
// assembled unit and the picture, and the picture is consistent. Decoding only the visible
// rectangle gives exactly the whole display area cropped.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "base/std_file.h"
#include "render/subpicture_decoder.h"

namespace {

struct Decoded {
  int result = 0;
  int32_t duration = -1;
  korvalin::Picture picture;
};

Decoded Decode(const uint8_t* data, size_t size, korvalin::SubpictureArea area) {
  korvalin::LumaPalette palette;
  for (std::size_t i = 0; i < palette.luma.size(); ++i)
    palette.luma[i] = static_cast<uint8_t>(16 * i + 15);
  palette.read = true;
  Decoded d;
  korvalin::StdFile file;
  if (file.OpenMemory(data, size, "rb") != 0) std::abort();
  d.result = korvalin::ReadSubpicture(d.picture, d.duration, 0, file, palette, area);
  return d;
}

void Check(const Decoded& d) {
  if (d.result != 0 && d.result != -1) std::abort();
  if (d.duration < 0) std::abort();
  const korvalin::Picture& p = d.picture;
  if (p.width < 0 || p.height < 0 || p.width > 4096 || p.height > 4096) std::abort();
  if (p.pixels.size() != static_cast<std::size_t>(p.width) * static_cast<std::size_t>(p.height))
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Decoded whole = Decode(data, size, korvalin::SubpictureArea::kWhole);
  Check(whole);
  const Decoded visible = Decode(data, size, korvalin::SubpictureArea::kVisible);
  Check(visible);
  whole.picture.CropToContent();
  if (visible.result != whole.result || visible.duration != whole.duration ||
      visible.picture.width != whole.picture.width ||
      visible.picture.height != whole.picture.height ||
      visible.picture.pixels != whole.picture.pixels) {
    std::abort();
  }
  return 0;
}
