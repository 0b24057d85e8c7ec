#pragma once

#include <array>
#include <cstdint>

namespace korvalin {

// An unsigned integer of up to 64 words of 32 bits, least significant word first, with the
// count of words in use (0 for the value 0). Just enough arithmetic to scale a 64-bit time
// by a 32-bit ratio without losing the bits above 64 in between.
class LongUnsigned {
 public:
  static constexpr int kMaxWords = 64;

  void Clear() { count_ = 0; }
  void Set(uint64_t value);
  // Schoolbook, one word at a time; a carry out of the 64th word is lost.
  void MultiplyBy(uint32_t factor);
  // From the top word down, carrying each remainder into the next lower word. Returns the
  // remainder. A divisor of 0 leaves the value as it is and returns 0.
  uint32_t DivideBy(uint32_t divisor);
  // The value modulo 2^64.
  uint64_t Low64() const;
  int WordCount() const { return count_; }

 private:
  void Trim();

  std::array<uint32_t, kMaxWords> words_{};
  int count_ = 0;
};

}  // namespace korvalin
