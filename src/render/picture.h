#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalin {

// An 8-bit single-channel subtitle image: row-major, top row first, no padding;
// 0 is transparent, any other value a brightness (luma) the renderer multiplies with the
// style's colour. An empty picture has width = height = 0 and no pixels.
class Picture {
 public:
  // Largest width or height LoadBitmapFile accepts, and largest pixel count; anything
  // beyond is refused as absurd for a subtitle picture.
  static constexpr int32_t kMaxSide = 16384;
  static constexpr int64_t kMaxPixels = int64_t{1} << 26;  // 64 Mi

  Picture() = default;
  // A picture of the given size, all pixels 0. Sizes below 1 make an empty picture.
  Picture(int32_t width, int32_t height);
  Picture(const Picture&) = default;
  Picture& operator=(const Picture&) = default;
  Picture(Picture&&) = default;
  Picture& operator=(Picture&&) = default;
  virtual ~Picture();

  bool HasPixels() const { return width > 0 && height > 0 && !pixels.empty(); }

  // Frees the buffer; width = height = 0.
  void FreePixels();

  // Loads a Windows BMP file (24, 8, 4 or 1 bits per pixel, uncompressed, bottom-up) as
  // luma. Returns 0, or -1 with the picture left empty: null name, file missing, wrong
  // type, unsupported bit count, compressed or top-down file, absurd size, short read.
  int LoadBitmapFile(const char* name);
  // The same on bytes in memory (the file's whole content).
  int LoadBitmapBytes(const uint8_t* data, std::size_t size);

  // Cuts the picture to the smallest rectangle holding every non-zero pixel; an all-zero
  // picture becomes empty. Returns 0.
  int CropToContent();

  // Smooths staircase edges between two clearly different levels. Returns 0.
  int SmoothEdges();

  // Bilinear resize to newWidth x newHeight. -1 on an empty picture; sizes below 1 make
  // the picture empty and return 0.
  int ScaleTo(int32_t newWidth, int32_t newHeight);

  // Pixel at (x, y); the caller keeps x and y inside the picture.
  uint8_t At(int32_t x, int32_t y) const {
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
  }

  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> pixels;
};

// SmoothPixel: the nine values of a 3 x 3 neighbourhood in row order
// (top-left .. bottom-right, centre at index 4); returns the centre's new value.
uint8_t SmoothPixel(const std::array<uint8_t, 9>& n);

}  // namespace korvalin
