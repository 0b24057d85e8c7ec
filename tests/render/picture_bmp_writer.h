#pragma once

// Writes small Windows BMP files: bottom-up rows padded to four bytes, a palette below 24 bits.

#include <cstdint>
#include <string>
#include <vector>

namespace korvalin::testing {

struct Rgb {
  uint8_t r, g, b;
};

struct BmpLayout {
  int32_t width = 0;
  int32_t height = 0;  // written as is: negative for a top-down file
  uint16_t bits = 24;
  uint32_t compression = 0;
  std::vector<Rgb> palette;
  std::vector<std::vector<uint32_t>> rows;  // top first; 24 bits: 0xRRGGBB, else indices
  int32_t dataOffsetDelta = 0;              // added to the true pixel data offset
};

inline void PutLe(std::string& s, uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) s.push_back(static_cast<char>(v >> (8 * i)));
}

inline std::string EncodeBmpRow(const BmpLayout& bmp, const std::vector<uint32_t>& row) {
  std::string out;
  const int bits = bmp.bits == 8 || bmp.bits == 4 ? bmp.bits : 1;
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (bmp.bits == 24) {
      PutLe(out, row[i], 3);
    } else {
      const int shift = 8 - bits * (1 + static_cast<int>(i) % (8 / bits));
      if (shift == 8 - bits) out.push_back('\0');
      out.back() = static_cast<char>(out.back() | (row[i] & ((1u << bits) - 1)) << shift);
    }
  }
  while (out.size() % 4) out.push_back('\0');
  return out;
}

inline std::string BuildBmp(const BmpLayout& bmp) {
  std::string pal, data, out;
  for (const Rgb& c : bmp.palette) PutLe(pal, uint32_t{c.r} << 16 | c.g << 8 | c.b, 4);
  for (auto it = bmp.rows.rbegin(); it != bmp.rows.rend(); ++it) data += EncodeBmpRow(bmp, *it);
  const auto head = static_cast<uint32_t>(14 + 40 + pal.size());
  const auto size = static_cast<uint32_t>(data.size());
  const auto offset = head + static_cast<uint32_t>(bmp.dataOffsetDelta);
  const auto w = static_cast<uint32_t>(bmp.width), h = static_cast<uint32_t>(bmp.height);
  const uint32_t fields[] = {19778,    head + size,     0,    offset, 40,   w, h, 1,
                             bmp.bits, bmp.compression, size, 2835,   2835, 0, 0};
  for (int i = 0; i < 15; ++i) PutLe(out, fields[i], i == 0 || i == 7 || i == 8 ? 2 : 4);
  return out + pal + data;
}

inline std::vector<Rgb> GreyPalette(int entries) {
  std::vector<Rgb> p;
  for (int i = 0; i < entries; ++i) {
    const auto v = static_cast<uint8_t>(i * 255 / (entries - 1));
    p.push_back({v, v, v});
  }
  return p;
}

}  // namespace korvalin::testing
