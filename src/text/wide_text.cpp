#include "text/wide_text.h"

#include <cstdint>

#include "platform/code_page.h"

namespace korvalin {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct MarkBytes {
  std::string_view bytes;
  TextEncoding encoding;
};

// Longest first: the UTF-32 LE mark begins with the UTF-16 LE one.
constexpr MarkBytes kMarks[] = {
    {std::string_view("\xFF\xFE\x00\x00", 4), TextEncoding::kUtf32Le},
    {std::string_view("\x00\x00\xFE\xFF", 4), TextEncoding::kUtf32Be},
    {std::string_view("\xEF\xBB\xBF", 3), TextEncoding::kUtf8},
    {std::string_view("\xFF\xFE", 2), TextEncoding::kUtf16Le},
    {std::string_view("\xFE\xFF", 2), TextEncoding::kUtf16Be},
};

// The code unit of size bytes at p, in the given byte order.
char32_t UnitAt(const char* p, std::size_t size, bool bigEndian) {
  char32_t unit = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(p[bigEndian ? i : size - 1 - i]);
    unit = (unit << 8) | byte;
  }
  return unit;
}

std::string Utf16ToUtf8(std::string_view bytes, bool bigEndian) {
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 2);
  std::size_t i = 0;
  for (; i + 2 <= bytes.size(); i += 2) {
    char32_t unit = UnitAt(bytes.data() + i, 2, bigEndian);
    if (unit >= 0xD800 && unit < 0xDC00 && i + 4 <= bytes.size()) {
      const char32_t low = UnitAt(bytes.data() + i + 2, 2, bigEndian);
      if (low >= 0xDC00 && low < 0xE000) {
        unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    platform::AppendUtf8(&out, unit);  // a surrogate left alone becomes U+FFFD there
  }
  if (i < bytes.size()) platform::AppendUtf8(&out, kReplacement);
  return out;
}

std::string Utf32ToUtf8(std::string_view bytes, bool bigEndian) {
  std::string out;
  out.reserve(bytes.size() / 2);
  std::size_t i = 0;
  for (; i + 4 <= bytes.size(); i += 4)
    platform::AppendUtf8(&out, UnitAt(bytes.data() + i, 4, bigEndian));
  if (i < bytes.size()) platform::AppendUtf8(&out, kReplacement);
  return out;
}

}  // namespace

ByteOrderMark FindByteOrderMark(std::string_view bytes) {
  for (const MarkBytes& mark : kMarks) {
    if (bytes.substr(0, mark.bytes.size()) == mark.bytes) return {mark.encoding, mark.bytes.size()};
  }
  return {};
}

bool IsWideEncoding(TextEncoding encoding) {
  return encoding != TextEncoding::kBytes && encoding != TextEncoding::kUtf8;
}

std::string WideTextToUtf8(std::string_view units, TextEncoding encoding) {
  switch (encoding) {
    case TextEncoding::kUtf16Le:
      return Utf16ToUtf8(units, false);
    case TextEncoding::kUtf16Be:
      return Utf16ToUtf8(units, true);
    case TextEncoding::kUtf32Le:
      return Utf32ToUtf8(units, false);
    case TextEncoding::kUtf32Be:
      return Utf32ToUtf8(units, true);
    default:
      return std::string(units);
  }
}

}  // namespace korvalin
