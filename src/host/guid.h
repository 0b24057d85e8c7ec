#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace korvalin::host {

// A 128-bit identifier in the Windows layout. Identifiers are written in code in their
// registry form, MakeGuid("73646976-0000-0010-8000-00AA00389B71"), checked at compile time.
struct GUID {
  uint32_t Data1 = 0;
  uint16_t Data2 = 0;
  uint16_t Data3 = 0;
  uint8_t Data4[8] = {};

  friend constexpr bool operator==(const GUID&, const GUID&) = default;
  friend constexpr auto operator<=>(const GUID&, const GUID&) = default;
};
using CLSID = GUID;
using IID = GUID;

inline constexpr GUID GUID_NULL{};

namespace guid_detail {

constexpr int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The value of `digits` hex digits at text[at]; -1 when one is no hex digit.
constexpr int64_t Hex(std::string_view text, std::size_t at, std::size_t digits) {
  int64_t value = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    const int digit = HexDigit(text[at + i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

}  // namespace guid_detail

// Reads "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX", with or without braces, hex digits in either
// case; false when the text is anything else.
constexpr bool ParseGuid(std::string_view text, GUID* guid) {
  if (text.size() == 38 && text.front() == '{' && text.back() == '}') text = text.substr(1, 36);
  if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
      text[23] != '-') {
    return false;
  }
  using guid_detail::Hex;
  const int64_t parts[] = {Hex(text, 0, 8),  Hex(text, 9, 4),  Hex(text, 14, 4), Hex(text, 19, 2),
                           Hex(text, 21, 2), Hex(text, 24, 2), Hex(text, 26, 2), Hex(text, 28, 2),
                           Hex(text, 30, 2), Hex(text, 32, 2), Hex(text, 34, 2)};
  for (const int64_t part : parts) {
    if (part < 0) return false;
  }
  guid->Data1 = static_cast<uint32_t>(parts[0]);
  guid->Data2 = static_cast<uint16_t>(parts[1]);
  guid->Data3 = static_cast<uint16_t>(parts[2]);
  for (std::size_t i = 0; i < 8; ++i) guid->Data4[i] = static_cast<uint8_t>(parts[3 + i]);
  return true;
}

// The same, checked at compile time.
consteval GUID MakeGuid(std::string_view text) {
  GUID guid;
  if (!ParseGuid(text, &guid)) throw "malformed GUID";  // fails constant evaluation
  return guid;
}

// The media subtype of a four-character code: {XXXXXXXX-0000-0010-8000-00AA00389B71}.
constexpr GUID FourCCMap(uint32_t fourcc) {
  return GUID{fourcc, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

// "{73646976-0000-0010-8000-00AA00389B71}": the registry form, upper case, with braces.
std::string ToString(const GUID& guid);

}  // namespace korvalin::host
