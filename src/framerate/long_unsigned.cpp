#include "framerate/long_unsigned.h"

namespace korvalin {

void LongUnsigned::Set(uint64_t value) {
  words_[0] = static_cast<uint32_t>(value);
  words_[1] = static_cast<uint32_t>(value >> 32);
  count_ = 2;
  Trim();
}

void LongUnsigned::MultiplyBy(uint32_t factor) {
  uint64_t carry = 0;
  for (int i = 0; i < count_; ++i) {
    const uint64_t product = uint64_t{words_[i]} * factor + carry;
    words_[i] = static_cast<uint32_t>(product);
    carry = product >> 32;
  }
  if (carry != 0 && count_ < kMaxWords) words_[count_++] = static_cast<uint32_t>(carry);
  Trim();  // a factor of 0 leaves only zero words
}

uint32_t LongUnsigned::DivideBy(uint32_t divisor) {
  if (divisor == 0) return 0;
  uint64_t remainder = 0;
  for (int i = count_ - 1; i >= 0; --i) {
    const uint64_t dividend = (remainder << 32) | words_[i];
    words_[i] = static_cast<uint32_t>(dividend / divisor);
    remainder = dividend % divisor;
  }
  Trim();
  return static_cast<uint32_t>(remainder);
}

uint64_t LongUnsigned::Low64() const {
  const uint64_t low = count_ > 0 ? words_[0] : 0;
  const uint64_t high = count_ > 1 ? words_[1] : 0;
  return (high << 32) | low;
}

void LongUnsigned::Trim() {
  while (count_ > 0 && words_[count_ - 1] == 0) --count_;
}

}  // namespace korvalin
