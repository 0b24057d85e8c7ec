#include "base/number_scan.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

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

// Parsed with from_chars rather than strtof so that a host program's locale (a decimal
// comma) never changes how "23.976" reads.
bool ScanFloat(const char* text, float* value, const char** stop) {
  if (!text) return false;
  const char* p = text;
  while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
  const bool negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  const char* last = p + std::strlen(p);
  double number = 0;
  const auto [end, error] = std::from_chars(p, last, number, std::chars_format::general);
  if (end == p) return false;
  if (error == std::errc::result_out_of_range) {
    // Too large for any float reads as infinity, too small as zero, as strtof gives them.
    const bool tiny = std::memchr(p, '-', static_cast<std::size_t>(end - p)) != nullptr;
    number = tiny ? 0.0 : std::numeric_limits<double>::infinity();
  }
  *value = static_cast<float>(negative ? -number : number);
  if (stop) *stop = end;
  return true;
}

}  // namespace korvalin
