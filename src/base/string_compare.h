#pragma once

#include <string_view>

namespace korvalin {

// ASCII letter-case folding, as the system compares names, extensions and keys.
constexpr char ToLowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; }
constexpr char ToUpperAscii(char c) { return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c; }

constexpr bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (ToLowerAscii(a[i]) != ToLowerAscii(b[i])) return false;
  }
  return true;
}

// <0, 0, >0 like strcmp, ignoring ASCII letter case.
constexpr int CompareIgnoreCase(std::string_view a, std::string_view b) {
  const std::size_t n = a.size() < b.size() ? a.size() : b.size();
  for (std::size_t i = 0; i < n; ++i) {
    const auto x = static_cast<unsigned char>(ToLowerAscii(a[i]));
    const auto y = static_cast<unsigned char>(ToLowerAscii(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

}  // namespace korvalin
