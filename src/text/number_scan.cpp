#include "text/number_scan.h"

#include <cstdlib>
#include <limits>

namespace korvalin {

bool ScanInt(const char* text, int32_t* value) {
  if (!text) return false;
  char* end = nullptr;
  const long long number = std::strtoll(text, &end, 10);  // saturates instead of overflowing
  if (end == text) return false;
  constexpr long long kMin = std::numeric_limits<int32_t>::min();
  constexpr long long kMax = std::numeric_limits<int32_t>::max();
  *value = static_cast<int32_t>(number < kMin ? kMin : (number > kMax ? kMax : number));
  return true;
}

bool ScanFloat(const char* text, float* value) {
  if (!text) return false;
  char* end = nullptr;
  const float number = std::strtof(text, &end);
  if (end == text) return false;
  *value = number;
  return true;
}

}  // namespace korvalin
