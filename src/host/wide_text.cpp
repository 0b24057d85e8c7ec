#include "host/wide_text.h"

#include <cstdint>

#include "platform/code_page.h"

namespace korvalin::host {
namespace {

constexpr char32_t kEscapeBase = 0xDC00;

// The code point of the valid UTF-8 sequence at text[i] and its length, or length 0.
int DecodeUtf8(std::string_view text, std::size_t i, char32_t* code) {
  const auto byte = [&](std::size_t k) { return static_cast<uint8_t>(text[k]); };
  const uint8_t lead = byte(i);
  int length = lead < 0x80 ? 1 : (lead >> 5) == 6 ? 2 : (lead >> 4) == 14 ? 3 : (lead >> 3) == 30 ? 4 : 0;
  if (length == 0 || i + static_cast<std::size_t>(length) > text.size()) return 0;
  char32_t value = length == 1 ? lead : lead & (0x7F >> length);
  for (int k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    value = (value << 6) | (byte(i + k) & 0x3F);
  }
  static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
    return 0;
  *code = value;
  return length;
}

void AppendUtf16(std::u16string* out, char32_t code) {
  if (code < 0x10000) {
    out->push_back(static_cast<char16_t>(code));
    return;
  }
  code -= 0x10000;
  out->push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
  out->push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
}

}  // namespace

std::u16string Widen(std::string_view bytes) {
  std::u16string out;
  out.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    char32_t code = 0;
    const int length = DecodeUtf8(bytes, i, &code);
    if (length == 0) {
      out.push_back(static_cast<char16_t>(kEscapeBase + static_cast<uint8_t>(bytes[i])));
      ++i;
      continue;
    }
    AppendUtf16(&out, code);
    i += static_cast<std::size_t>(length);
  }
  return out;
}

std::string Narrow(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char32_t unit = text[i];
    const bool high = unit >= 0xD800 && unit <= 0xDBFF;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      platform::AppendUtf8(&out, 0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00));
      ++i;
    } else if (unit >= kEscapeBase && unit <= kEscapeBase + 0xFF) {
      out.push_back(static_cast<char>(unit - kEscapeBase));  // an escaped byte
    } else if (high || (unit >= 0xDC00 && unit <= 0xDFFF)) {
      platform::AppendUtf8(&out, 0xFFFD);
    } else {
      platform::AppendUtf8(&out, unit);
    }
  }
  return out;
}

}  // namespace korvalin::host
