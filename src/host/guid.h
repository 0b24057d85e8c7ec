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

constexpr uint32_t HexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<uint32_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<uint32_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<uint32_t>(c - 'A' + 10);
  throw "not a hexadecimal digit";  // fails constant evaluation
}

constexpr uint32_t Hex(std::string_view text, std::size_t at, std::size_t digits) {
  uint32_t value = 0;
  for (std::size_t i = 0; i < digits; ++i) value = value * 16 + HexDigit(text.at(at + i));
  return value;
}

}  // namespace guid_detail

// "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX", with or without braces.
consteval GUID MakeGuid(std::string_view text) {
  if (text.size() == 38) text = text.substr(1, 36);
  if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
      text[23] != '-') {
    throw "malformed GUID";
  }
  using guid_detail::Hex;
  GUID guid;
  guid.Data1 = Hex(text, 0, 8);
  guid.Data2 = static_cast<uint16_t>(Hex(text, 9, 4));
  guid.Data3 = static_cast<uint16_t>(Hex(text, 14, 4));
  guid.Data4[0] = static_cast<uint8_t>(Hex(text, 19, 2));
  guid.Data4[1] = static_cast<uint8_t>(Hex(text, 21, 2));
  for (std::size_t i = 0; i < 6; ++i)
    guid.Data4[2 + i] = static_cast<uint8_t>(Hex(text, 24 + 2 * i, 2));
  return guid;
}

// The media subtype of a four-character code: {XXXXXXXX-0000-0010-8000-00AA00389B71}.
constexpr GUID FourCCMap(uint32_t fourcc) {
  return GUID{fourcc, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

// "{73646976-0000-0010-8000-00AA00389B71}": the registry form, upper case, with braces.
std::string ToString(const GUID& guid);

}  // namespace korvalin::host
