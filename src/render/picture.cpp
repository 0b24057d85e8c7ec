#include "render/picture.h"

#include <algorithm>

namespace korvalin {

Picture::Picture(int32_t w, int32_t h) {
  if (w < 1 || h < 1) return;
  width = w;
  height = h;
  pixels.assign(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), 0);
}

Picture::~Picture() {
  FreePixels();
}

void Picture::FreePixels() {
  std::vector<uint8_t>().swap(pixels);
  width = 0;
  height = 0;
}

int Picture::CropToContent() {
  if (!HasPixels()) return 0;
  const std::size_t w = static_cast<std::size_t>(width);
  int32_t left = width, right = -1, top = height, bottom = -1;
  for (int32_t y = 0; y < height; ++y) {
    const uint8_t* row = pixels.data() + static_cast<std::size_t>(y) * w;
    int32_t first = -1, last = -1;
    for (int32_t x = 0; x < width; ++x) {
      if (row[x] != 0) {
        if (first < 0) first = x;
        last = x;
      }
    }
    if (first < 0) continue;
    left = std::min(left, first);
    right = std::max(right, last);
    top = std::min(top, y);
    bottom = y;
  }
  if (right < 0) {
    FreePixels();
    return 0;
  }
  const int32_t cw = right - left + 1;
  const int32_t ch = bottom - top + 1;
  if (cw == width && ch == height) return 0;
  std::vector<uint8_t> cropped(static_cast<std::size_t>(cw) * static_cast<std::size_t>(ch));
  for (int32_t y = 0; y < ch; ++y) {
    const uint8_t* src =
        pixels.data() + static_cast<std::size_t>(top + y) * w + static_cast<std::size_t>(left);
    std::copy(src, src + cw, cropped.begin() + static_cast<std::ptrdiff_t>(y) * cw);
  }
  pixels.swap(cropped);
  width = cw;
  height = ch;
  return 0;
}

}  // namespace korvalin
