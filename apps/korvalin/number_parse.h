#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace korvalin::cli {

// A whole decimal number (optionally "0x" hex) that fits in [min, max]; nothing else.
inline std::optional<int64_t> ParseInteger(std::string_view text, int64_t min, int64_t max) {
  bool negative = false;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  uint64_t magnitude = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return {};
  if (magnitude > (uint64_t{1} << 62)) return {};
  const int64_t value = negative ? -static_cast<int64_t>(magnitude) : static_cast<int64_t>(magnitude);
  if (value < min || value > max) return {};
  return value;
}

}  // namespace korvalin::cli
