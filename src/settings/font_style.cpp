#include "settings/font_style.h"

#include <array>

#include "base/string_compare.h"

namespace korvalin {

namespace {
constexpr std::array<CharsetEntry, 12> kCharsets{{
    {"Western", 0},
    {"Hebrew", 177},
    {"Arabic", 178},
    {"Greek", 161},
    {"Turkish", 162},
    {"Baltic", 186},
    {"Central European", 238},
    {"Cyrillic", 204},
    {"Vietnamese", 163},
    {"OEM", 255},
    {"Mac", 77},
    {"Hangeul", 129},
}};
}  // namespace

std::span<const CharsetEntry> CharsetTable() { return kCharsets; }

FontStyle FontStyle::SubtitleDefaults() { return FontStyle{}; }

FontStyle FontStyle::ClockDefaults() {
  FontStyle style;
  style.Size = 24;
  style.Weight = 700;
  style.XPos = 94;
  style.YPos = 94;
  return style;
}

int32_t FontStyle::CharsetValue() const {
  for (const CharsetEntry& entry : kCharsets) {
    if (EqualsIgnoreCase(entry.name, Charset.view())) return entry.number;
  }
  return 0;
}

int32_t FontStyle::ScaledSize(int32_t tv) const {
  if (tv != 1) return Size;
  return static_cast<int32_t>(Size * 0.75 + 0.5);
}

}  // namespace korvalin
