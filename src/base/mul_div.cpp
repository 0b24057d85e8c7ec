#include "base/mul_div.h"

namespace korvalin {

int32_t MulDiv(int32_t a, int32_t b, int32_t c) {
  if (c == 0) return -1;
  int64_t product = int64_t{a} * b;
  int64_t divisor = c;
  if (divisor < 0) {
    product = -product;
    divisor = -divisor;
  }
  const int64_t half = divisor / 2;
  const int64_t result = product >= 0 ? (product + half) / divisor : (product - half) / divisor;
  if (result > INT32_MAX || result < -INT32_MAX) return -1;
  return static_cast<int32_t>(result);
}

}  // namespace korvalin
