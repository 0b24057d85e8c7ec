#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvalin::platform {

// Windows code-page numbers the system uses for 8-bit text.
inline constexpr int kCodePageWestern = 1252;
inline constexpr int kCodePageMacRoman = 10000;

// The code page of a font character-set number (Western 0 -> 1252, Cyrillic 204 -> 1251, ...);
// an unknown number reads as Western.
int CodePageOfCharset(int32_t charset);

// The system ANSI code page: $KORVALIN_CODEPAGE ("1251", "cp1251" or "windows-1251") when it
// names a supported code page, else 1252.
int SystemCodePage();

// True when iconv can convert the code page.
bool IsSupportedCodePage(int codePage);

// Bytes in a code page to Unicode code points. A byte sequence the code page does not define
// becomes U+FFFD; an unsupported code page reads as 1252.
std::u32string DecodeCodePage(std::string_view bytes, int codePage);

// Code points to bytes in a code page; a code point the page cannot hold becomes '?'.
std::string EncodeCodePage(std::u32string_view text, int codePage);

// True when the bytes are well-formed UTF-8 (no overlongs, surrogates or values above
// U+10FFFF) and hold at least one multi-byte sequence.
bool IsMultiByteUtf8(std::string_view bytes);

// Well-formed UTF-8 to code points (call only after IsMultiByteUtf8 or on trusted text).
std::u32string DecodeUtf8(std::string_view bytes);

// Code points to UTF-8; values that are no Unicode scalar become U+FFFD.
std::string EncodeUtf8(std::u32string_view text);
// Appends one code point as UTF-8; U+FFFD for a value that is no Unicode scalar.
void AppendUtf8(std::string* bytes, char32_t c);

// How subtitle text is read: as UTF-8 when it is valid UTF-8 holding a multi-byte sequence,
// otherwise in the given code page.
std::u32string DecodeSubtitleText(std::string_view bytes, int codePage);

}  // namespace korvalin::platform
