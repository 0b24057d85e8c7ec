#pragma once

#include <cstdint>
#include <vector>

namespace korvalin {

// An 8-bit single-channel subtitle image: row-major, top row first; 0 is transparent, any
// other value a brightness.
class Picture {
 public:
  Picture() = default;
  Picture(int32_t width, int32_t height)
      : width(width), height(height), pixels(static_cast<std::size_t>(width) * height) {}
  virtual ~Picture() = default;

  bool HasPixels() const { return width > 0 && height > 0 && !pixels.empty(); }

  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> pixels;
};

}  // namespace korvalin
