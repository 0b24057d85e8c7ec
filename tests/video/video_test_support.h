#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "video/video_format.h"

namespace korvalin::testing {

// A byte buffer with guard bytes on both sides, to catch writes past either end.
class GuardedBuffer {
 public:
  static constexpr size_t kGuard = 64;
  static constexpr uint8_t kGuardByte = 0xA5;

  explicit GuardedBuffer(size_t size, uint8_t fill = 0x5A)
      : bytes_(size + 2 * kGuard, fill), size_(size) {
    std::fill_n(bytes_.begin(), kGuard, kGuardByte);
    std::fill_n(bytes_.end() - kGuard, kGuard, kGuardByte);
  }
  uint8_t* data() { return bytes_.data() + kGuard; }
  size_t size() const { return size_; }
  std::vector<uint8_t> Bytes() const {
    return {bytes_.begin() + kGuard, bytes_.begin() + kGuard + size_};
  }
  bool GuardsIntact() const {
    const auto isGuard = [](uint8_t b) { return b == kGuardByte; };
    return std::all_of(bytes_.begin(), bytes_.begin() + kGuard, isGuard) &&
           std::all_of(bytes_.end() - kGuard, bytes_.end(), isGuard);
  }

 private:
  std::vector<uint8_t> bytes_;
  size_t size_;
};

inline VideoFormat MakeFormat(int32_t width, int32_t height, uint16_t bitCount) {
  VideoFormat format;
  format.biWidth = width;
  format.biHeight = height;
  format.biBitCount = bitCount;
  return format;
}

}  // namespace korvalin::testing
