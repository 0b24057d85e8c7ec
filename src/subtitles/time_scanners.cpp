#include "subtitles/time_scanners.h"

#include <array>
#include <cctype>
#include <cstddef>
#include <limits>

namespace korvalin {
namespace {

constexpr int kMaxFields = 4;
constexpr int64_t kIntMax = std::numeric_limits<int32_t>::max();
constexpr int64_t kIntMin = std::numeric_limits<int32_t>::min();

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// One "%d" conversion with an optional width (0 = none), as scanf reads it: leading white
// space skipped, a sign, then digits; the width counts the sign. Saturates at 32 bits.
bool ScanInteger(const char*& cursor, int width, int32_t* value) {
  const char* p = cursor;
  while (IsSpace(*p)) ++p;
  int left = width > 0 ? width : std::numeric_limits<int>::max();
  bool negative = false;
  if (left > 0 && (*p == '+' || *p == '-')) {
    negative = *p == '-';
    ++p;
    --left;
  }
  if (left == 0 || !IsDigit(*p)) return false;
  int64_t magnitude = 0;
  while (left > 0 && IsDigit(*p)) {
    if (magnitude <= kIntMax) magnitude = magnitude * 10 + (*p - '0');
    ++p;
    --left;
  }
  int64_t signed_value = negative ? -magnitude : magnitude;
  if (signed_value > kIntMax) signed_value = kIntMax;
  if (signed_value < kIntMin) signed_value = kIntMin;
  *value = static_cast<int32_t>(signed_value);
  cursor = p;
  return true;
}

// A small sscanf for patterns made of literal characters, white space and "%d" / "%0Nd"
// conversions. Returns the number of fields converted before the first mismatch.
int ScanFields(const char* text, const char* pattern, std::array<int32_t, kMaxFields>& fields) {
  int converted = 0;
  const char* p = text;
  for (const char* f = pattern; *f != '\0'; ++f) {
    if (*f == '%') {
      int width = 0;
      ++f;
      while (IsDigit(*f)) width = width * 10 + (*f++ - '0');
      // *f is 'd': every pattern here converts integers only.
      if (converted == kMaxFields || !ScanInteger(p, width, &fields[converted])) break;
      ++converted;
    } else if (IsSpace(*f)) {
      while (IsSpace(*p)) ++p;
    } else if (*p == *f) {
      ++p;
    } else {
      break;
    }
  }
  return converted;
}

int32_t Wrap(int64_t value) { return static_cast<int32_t>(static_cast<uint32_t>(value)); }

int32_t ScanSeconds(const char* text, const char* pattern) {
  std::array<int32_t, kMaxFields> f{};
  if (!text || ScanFields(text, pattern, f) != 3) return -1;
  return Wrap(((int64_t{f[0]} * 60 + f[1]) * 60 + f[2]) * 1000);
}

int32_t ScanWithMillis(const char* text, const char* pattern) {
  std::array<int32_t, kMaxFields> f{};
  if (!text || ScanFields(text, pattern, f) != 4) return -1;
  return Wrap(((int64_t{f[0]} * 60 + f[1]) * 60 + f[2]) * 1000 + f[3]);
}

int32_t ScanWithCentis(const char* text, const char* pattern) {
  std::array<int32_t, kMaxFields> f{};
  if (!text || ScanFields(text, pattern, f) != 4) return -1;
  return Wrap((((int64_t{f[0]} * 60 + f[1]) * 60 + f[2]) * 100 + f[3]) * 10);
}

}  // namespace

int32_t ScanBracketedTime(const char* text) { return ScanSeconds(text, "[%02d:%02d:%02d]"); }
int32_t ScanCommaMillisTime(const char* text) {
  return ScanWithMillis(text, "%02d:%02d:%02d,%03d");
}
int32_t ScanDotCentisTime(const char* text) { return ScanWithCentis(text, "%02d:%02d:%02d.%02d"); }
int32_t ScanColonCentisTime(const char* text) {
  return ScanWithCentis(text, "%02d:%02d:%02d:%02d");
}
int32_t ScanPlainTime(const char* text) { return ScanSeconds(text, "%d:%d:%d"); }
int32_t ScanColonMillisTime(const char* text) {
  return ScanWithMillis(text, "%02d:%02d:%02d:%03d");
}

int32_t ScanFrameNumber(const char*& cursor) {
  if (!cursor || *cursor != '{') return -1;
  const char* p = cursor + 1;
  int64_t number = 0;
  for (; IsDigit(*p); ++p) {
    number = number * 10 + (*p - '0');
    if (number > kIntMax) number = kIntMax;
  }
  if (*p != '}') return -1;
  cursor = p + 1;
  return static_cast<int32_t>(number);
}

}  // namespace korvalin
