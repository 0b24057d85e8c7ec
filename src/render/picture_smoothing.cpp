// SmoothEdges and SmoothPixel.
#include <algorithm>
#include <cstdlib>

#include "render/picture.h"

namespace korvalin {

namespace {

// A pattern in one orientation: bit i of mask is set where the pattern compares place i
// (row order, centre excluded), bit i of value is the mark it wants there.
struct OrientedPattern {
  uint16_t mask;
  uint16_t value;
  int32_t weight;
};

struct PatternSpec {
  int8_t cells[9];  // 0, 1, or 2 = any; the centre (index 4) is not compared
  int32_t weight;
};

constexpr PatternSpec kPatterns[5] = {
    {{1, 1, 0, 1, 2, 0, 1, 0, 0}, 28}, {{1, 1, 1, 1, 2, 0, 1, 0, 0}, 30},
    {{2, 1, 0, 1, 2, 2, 0, 2, 2}, 15}, {{1, 1, 0, 1, 2, 0, 1, 1, 2}, 20},
    {{1, 1, 1, 1, 2, 0, 1, 1, 1}, 20},
};

// The eight orientations of the square: where (row, column) of the oriented pattern reads
// the written pattern.
constexpr int Source(int orientation, int r, int c) {
  switch (orientation) {
    case 0:
      return r * 3 + c;  // as written
    case 1:
      return r * 3 + (2 - c);  // mirrored left-right
    case 2:
      return (2 - r) * 3 + c;  // mirrored top-bottom
    case 3:
      return (2 - r) * 3 + (2 - c);  // turned half round
    case 4:
      return c * 3 + r;  // transposed
    case 5:
      return c * 3 + (2 - r);  // turned a quarter one way
    case 6:
      return (2 - c) * 3 + r;  // turned a quarter the other way
    default:
      return (2 - c) * 3 + (2 - r);  // transposed across the other diagonal
  }
}

struct PatternTable {
  OrientedPattern entries[5 * 8];
};

constexpr PatternTable BuildTable() {
  PatternTable table{};
  int n = 0;
  for (const PatternSpec& shape : kPatterns) {
    for (int o = 0; o < 8; ++o) {
      uint16_t mask = 0, value = 0;
      for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
          const int place = r * 3 + c;
          if (place == 4) continue;
          const int8_t cell = shape.cells[Source(o, r, c)];
          if (cell == 2) continue;
          mask = static_cast<uint16_t>(mask | (1u << place));
          if (cell == 1) value = static_cast<uint16_t>(value | (1u << place));
        }
      }
      table.entries[n++] = {mask, value, shape.weight};
    }
  }
  return table;
}

constexpr PatternTable kTable = BuildTable();

}  // namespace

uint8_t SmoothPixel(const std::array<uint8_t, 9>& n) {
  const int32_t c = n[4];
  const auto [loIt, hiIt] = std::minmax_element(n.begin(), n.end());
  const int32_t lo = *loIt, hi = *hiIt;
  if (std::abs(lo - c) < 128 && std::abs(hi - c) < 128) return n[4];
  uint16_t marks = 0;
  for (int i = 0; i < 9; ++i) {
    const int32_t v = n[static_cast<std::size_t>(i)];
    if (std::abs(v - lo) < 5) continue;
    if (std::abs(v - hi) < 5) {
      marks = static_cast<uint16_t>(marks | (1u << i));
      continue;
    }
    return n[4];  // a third level
  }
  int32_t target = hi;
  if (marks & (1u << 4)) {
    marks = static_cast<uint16_t>(~marks & 0x1FF);
    target = lo;
  }
  for (const OrientedPattern& p : kTable.entries) {
    if ((marks & p.mask) != p.value) continue;
    const int32_t d = (target - c) * p.weight;
    const int32_t result = d >= 0 ? c + (d + 50) / 100 : c + (d - 50) / 100;
    return static_cast<uint8_t>(std::clamp(result, 0, 255));
  }
  return n[4];
}

int Picture::SmoothEdges() {
  if (!HasPixels()) return 0;
  if (width < 3 || height < 3) return 0;
  std::vector<uint8_t> out(pixels);
  const std::size_t w = static_cast<std::size_t>(width);
  for (int32_t y = 1; y + 1 < height; ++y) {
    const std::size_t row = static_cast<std::size_t>(y) * w;
    for (int32_t x = 1; x + 1 < width; ++x) {
      const std::size_t i = row + static_cast<std::size_t>(x);
      if (pixels[i] == 0) continue;
      const std::array<uint8_t, 9> n = {pixels[i - w - 1], pixels[i - w], pixels[i - w + 1],
                                        pixels[i - 1],     pixels[i],     pixels[i + 1],
                                        pixels[i + w - 1], pixels[i + w], pixels[i + w + 1]};
      const uint8_t v = SmoothPixel(n);
      out[i] = v == 0 ? 1 : v;
    }
  }
  pixels.swap(out);
  return 0;
}

}  // namespace korvalin
