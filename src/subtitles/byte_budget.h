#pragma once

#include <cstddef>

#include "render/picture.h"

namespace korvalin {

// What one track's pictures may hold in decoded pixels. Files that name pictures far beyond
// it (thousands of distinct large units or bitmaps) are refused instead of exhausting memory.
inline constexpr std::size_t kTrackPictureByteLimit = std::size_t{512} << 20;

// Counts the bytes a reader keeps for one track: the pixels of the distinct pictures it
// decodes, or the text it stores.
class ByteBudget {
 public:
  explicit ByteBudget(std::size_t byteLimit = kTrackPictureByteLimit) : limit_(byteLimit) {}

  // Counts newly kept bytes (a shared picture is counted once, when made). False once the
  // bytes together exceed the limit; it stays exceeded.
  bool Spend(std::size_t bytes);
  bool Exceeded() const { return exceeded_; }

 private:
  std::size_t limit_;
  std::size_t spent_ = 0;
  bool exceeded_ = false;
};

// The bytes a picture's pixels take.
inline std::size_t PixelBytes(const Picture& picture) {
  return picture.pixels.size();
}

}  // namespace korvalin
