#pragma once

// Writes small Windows BMP files for the tests of LoadBitmapFile: bottom-up rows padded to
// four bytes, a palette for 8, 4 and 1 bits per pixel.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace korvalin::testing {

struct Rgb {
  uint8_t r, g, b;
};

struct BmpSpec {
  int32_t width = 0;
  int32_t height = 0;  // written as is: negative for a top-down file
  uint16_t bits = 24;
  uint32_t compression = 0;
  std::vector<Rgb> palette;                 // 2^bits entries for 8, 4, 1 bits
  std::vector<std::vector<uint32_t>> rows;  // top row first; 24 bits: 0xRRGGBB, else indices
  int32_t dataOffsetDelta = 0;              // added to the true pixel data offset
};

inline void PutLe(std::string& s, uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) s.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

inline std::string EncodeBmpRow(const BmpSpec& bmp, const std::vector<uint32_t>& row) {
  std::string out;
  if (bmp.bits == 24) {
    for (uint32_t c : row) {
      out.push_back(static_cast<char>(c & 0xFF));
      out.push_back(static_cast<char>((c >> 8) & 0xFF));
      out.push_back(static_cast<char>((c >> 16) & 0xFF));
    }
  } else if (bmp.bits == 8) {
    for (uint32_t c : row) out.push_back(static_cast<char>(c));
  } else if (bmp.bits == 4) {
    for (std::size_t i = 0; i < row.size(); i += 2) {
      const uint32_t lo = i + 1 < row.size() ? row[i + 1] : 0;
      out.push_back(static_cast<char>((row[i] << 4) | lo));
    }
  } else {
    for (std::size_t i = 0; i < row.size(); i += 8) {
      uint32_t v = 0;
      for (std::size_t k = 0; k < 8 && i + k < row.size(); ++k)
        if (row[i + k]) v |= 0x80u >> k;
      out.push_back(static_cast<char>(v));
    }
  }
  while (out.size() % 4) out.push_back('\0');
  return out;
}

inline std::string BuildBmp(const BmpSpec& bmp) {
  std::string pal;
  for (const Rgb& c : bmp.palette) {
    pal.push_back(static_cast<char>(c.b));
    pal.push_back(static_cast<char>(c.g));
    pal.push_back(static_cast<char>(c.r));
    pal.push_back('\0');
  }
  std::string data;
  for (auto it = bmp.rows.rbegin(); it != bmp.rows.rend(); ++it) data += EncodeBmpRow(bmp, *it);
  const uint32_t offset = static_cast<uint32_t>(14 + 40 + pal.size() + bmp.dataOffsetDelta);
  std::string out;
  PutLe(out, 19778, 2);
  PutLe(out, static_cast<uint32_t>(14 + 40 + pal.size() + data.size()), 4);
  PutLe(out, 0, 4);
  PutLe(out, offset, 4);
  PutLe(out, 40, 4);
  PutLe(out, static_cast<uint32_t>(bmp.width), 4);
  PutLe(out, static_cast<uint32_t>(bmp.height), 4);
  PutLe(out, 1, 2);
  PutLe(out, bmp.bits, 2);
  PutLe(out, bmp.compression, 4);
  PutLe(out, static_cast<uint32_t>(data.size()), 4);
  PutLe(out, 2835, 4);
  PutLe(out, 2835, 4);
  PutLe(out, 0, 4);
  PutLe(out, 0, 4);
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
