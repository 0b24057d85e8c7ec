#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvalin {

// Text files saved as UTF-16 or UTF-32 (what Windows editors call "Unicode") start with a byte
// order mark; the readers read bytes, so such text is turned into UTF-8 before they see it.
enum class TextEncoding { kBytes, kUtf8, kUtf16Le, kUtf16Be, kUtf32Le, kUtf32Be };

struct ByteOrderMark {
  TextEncoding encoding = TextEncoding::kBytes;  // kBytes: no mark
  std::size_t length = 0;
};

// The byte order mark at the start of bytes. FF FE 00 00 is taken as UTF-32 LE rather than
// UTF-16 LE starting with U+0000.
ByteOrderMark FindByteOrderMark(std::string_view bytes);

bool IsWideEncoding(TextEncoding encoding);

// UTF-16 or UTF-32 text in encoding, its mark removed, as UTF-8. Unpaired surrogates, values
// above U+10FFFF and a cut-off last unit become U+FFFD. Other encodings come back unchanged.
std::string WideTextToUtf8(std::string_view units, TextEncoding encoding);

}  // namespace korvalin
