#pragma once

// Builds whole VobSub files for tests: a ".sub" program stream of subpicture units (see
// render/subpicture_writer.h), its ".idx" index text and an ".IFO" palette.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "../render/subpicture_writer.h"

namespace korvalin::testing {

inline std::string TimestampLine(int32_t ms, int64_t filepos) {
  char text[96];
  std::snprintf(text, sizeof text, "timestamp: %02d:%02d:%02d:%03d, filepos: %09llx\n",
                ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms % 1000,
                static_cast<unsigned long long>(filepos));
  return text;
}

// A palette line of 16 colours written as 6 hexadecimal digits.
inline std::string PaletteLine(const std::array<uint32_t, 16>& colours) {
  std::string line = "palette: ";
  for (std::size_t i = 0; i < colours.size(); ++i) {
    char c[16];
    std::snprintf(c, sizeof c, "%06x", colours[i]);
    line += (i ? ", " : "") + std::string(c);
  }
  return line + "\n";
}

// With a palette of greys whose luma is 16 * i + 15 for any byte order.
inline std::string IndexHeader(int version = 6, bool withPalette = true,
                               const std::string& options = "") {
  std::string text = "# VobSub index file, v" + std::to_string(version) +
                     " (do not modify this line!)\n#\n# Settings\n\nsize: 720x576\norg: 0, 0\n" +
                     "scale: 100%, 100%\nalpha: 100%\nsmooth: OFF\nfadein/out: 50, 50\n" +
                     "align: OFF at LEFT TOP\ntime offset: 0\nforced subs: OFF\n";
  std::array<uint32_t, 16> greys{};
  for (uint32_t i = 0; i < 16; ++i) greys[i] = (16 * i + 15) * 0x010101u;
  if (withPalette) text += PaletteLine(greys);
  text += "custom colors: OFF, tridx: 0000, colors: 000000, 000000, 000000, 000000\n";
  return text + options + "\n# Language index in use\nlangidx: 0\n";
}

// An ".IFO" file whose palette holds the given Y, Cb, Cr entries; chain is the byte at 4111.
inline std::string IfoBytes(const std::array<std::array<uint8_t, 3>, 16>& ycbcr,
                            uint8_t chain = 0x20) {
  std::string bytes(4260 + chain + 64, '\0');
  bytes[4111] = static_cast<char>(chain);
  for (std::size_t i = 0; i < 16; ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      bytes[4260 + chain + 4 * i + 1 + k] = static_cast<char>(ycbcr[i][k]);
    }
  }
  return bytes;
}

// The ".sub" bytes, unit by unit.
class SubStream {
 public:
  // Appends a unit in its packs and returns the offset of its first pack.
  int64_t Add(const UnitSpec& layout, uint8_t substream = 0x20) {
    const auto at = static_cast<int64_t>(bytes_.size());
    for (const std::string& pack : SplitUnit(BuildUnit(layout), substream)) bytes_ += pack;
    return at;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// A w x h block of code 1 (palette entry 1 of the unit) with its delay.
inline UnitSpec BlockUnit(int32_t w, int32_t h, int32_t delay = 100) {
  UnitSpec s;
  s.width = w;
  s.height = h;
  s.delay = delay;
  for (int32_t y = 0; y < h; ++y) {
    Row row;
    for (int32_t left = w; left > 0; left -= 255) row.push_back({left > 255 ? 255 : left, 1});
    s.rows.push_back(row);
  }
  return s;
}

}  // namespace korvalin::testing
