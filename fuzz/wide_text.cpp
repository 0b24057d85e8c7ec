// Byte order marks and the conversion of UTF-16 and UTF-32 text to UTF-8 over any bytes:
// nothing is read out of bounds, and whatever the input, the output is well-formed UTF-8 no
// longer than three bytes per input unit (a replacement character is three).
#include "text/wide_text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

bool IsWellFormedUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    if (length == 0 || i + length > text.size()) return false;
    char32_t c = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(text[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      c = (c << 6) | (next & 0x3F);
    }
    const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (c < smallest[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return false;
    i += length;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const korvalin::ByteOrderMark mark = korvalin::FindByteOrderMark(bytes);
  if (mark.length > size) std::abort();
  using korvalin::TextEncoding;
  for (TextEncoding encoding : {TextEncoding::kUtf16Le, TextEncoding::kUtf16Be,
                                TextEncoding::kUtf32Le, TextEncoding::kUtf32Be}) {
    const std::string utf8 = korvalin::WideTextToUtf8(bytes.substr(mark.length), encoding);
    if (!IsWellFormedUtf8(utf8)) std::abort();
    if (utf8.size() > 3 * (size / 2 + 1)) std::abort();
  }
  return 0;
}
