#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace korvalin {

// An 8-bit text field of a fixed size (terminator included), as the settings record stores
// its texts. Longer texts are cut to fit; the field always holds a terminated text.
template <std::size_t N>
class FixedText {
  static_assert(N >= 1);

 public:
  static constexpr std::size_t kCapacity = N - 1;  // characters without the terminator

  FixedText() { bytes_[0] = '\0'; }
  FixedText(std::string_view text) { Assign(text); }  // NOLINT: implicit like a char array

  FixedText& operator=(std::string_view text) {
    Assign(text);
    return *this;
  }

  void Assign(std::string_view text) {
    const std::size_t n = text.size() < kCapacity ? text.size() : kCapacity;
    if (n > 0) std::memcpy(bytes_.data(), text.data(), n);
    bytes_[n] = '\0';
  }

  const char* c_str() const { return bytes_.data(); }
  std::string_view view() const { return std::string_view(bytes_.data()); }
  std::string str() const { return std::string(view()); }
  bool empty() const { return bytes_[0] == '\0'; }

  friend bool operator==(const FixedText& a, const FixedText& b) { return a.view() == b.view(); }
  friend bool operator==(const FixedText& a, std::string_view b) { return a.view() == b; }

 private:
  std::array<char, N> bytes_;
};

}  // namespace korvalin
