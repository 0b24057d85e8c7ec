#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "base/fixed_text.h"

namespace korvalin {

// One row of the character-set table: the name kept in a style and the font API's number.
struct CharsetEntry {
  std::string_view name;
  int32_t number;
};
std::span<const CharsetEntry> CharsetTable();

// A text style: the subtitles have one, the clock another.
struct FontStyle {
  int32_t Size = 36;
  int32_t Weight = 500;
  FixedText<128> Face{"Arial"};
  FixedText<128> Charset{"Western"};
  uint32_t Color = 0xFFFFFF;  // COLORREF 0x00BBGGRR
  int32_t Transparent = 1;
  int32_t XPos = 50;
  int32_t YPos = 8;

  static FontStyle SubtitleDefaults();
  static FontStyle ClockDefaults();

  // The font API's number for Charset (case-insensitive lookup), 0 when unknown.
  int32_t CharsetValue() const;
  // Size for the display shape: 16:9 (tv == 1) draws at three quarters.
  int32_t ScaledSize(int32_t tv) const;
};

}  // namespace korvalin
