#include "render/overlay_conversion.h"

#include <algorithm>
#include <cstring>

namespace korvalin {
namespace {

void StoreWord32(uint32_t word, uint8_t* out) {
  for (int i = 0; i < 4; ++i) out[i] = static_cast<uint8_t>(word >> (8 * i));
}

void StoreWord16(uint32_t word, uint8_t* out) {
  out[0] = static_cast<uint8_t>(word);
  out[1] = static_cast<uint8_t>(word >> 8);
}

// Full-range luma and signed colour differences of one opaque image pixel.
struct Ycc {
  int32_t y;
  int32_t u;
  int32_t v;
};

Ycc ToYcc(uint32_t word, const ColorTables& tables) {
  const auto r = static_cast<uint8_t>(word), g = static_cast<uint8_t>(word >> 8),
             b = static_cast<uint8_t>(word >> 16);
  const int32_t y =
      std::min(tables.RedToLuma(r) + tables.GreenToLuma(g) + tables.BlueToLuma(b), 255);
  // Arithmetic shifts round toward minus infinity, keeping U and V in -128..127.
  return {y, (37005 * (b - y)) >> 16, (46738 * (r - y)) >> 16};
}

uint8_t Studio(const ColorTables& tables, int32_t chroma) {
  return tables.ChromaToStudio(static_cast<uint8_t>(chroma));
}

}  // namespace

void ConvertRowToRgb32(const uint32_t* image, int32_t width, uint8_t* out) {
  for (int32_t x = 0; x < width; ++x, out += 4) {
    const uint32_t w = image[x];
    StoreWord32(w == 0 ? 0 : (w & 0xFF00FF00) | (w & 0xFF) << 16 | (w >> 16 & 0xFF), out);
  }
}

void ConvertRowToRgb565(const uint32_t* image, int32_t width, uint8_t* out) {
  for (int32_t x = 0; x < width; ++x, out += 2) {
    const uint32_t w = image[x];
    if (w == 0) {
      StoreWord16(0, out);
      continue;
    }
    const uint32_t r = w & 0xFF, g = w >> 8 & 0xFF, b = w >> 16 & 0xFF;
    const uint32_t packed = (r & 0xF8) << 8 | (g & 0xFC) << 3 | b >> 3;
    StoreWord16(packed == 0 ? 0x0821 : packed, out);
  }
}

void ConvertRowToYuy2(const uint32_t* image, int32_t width, int32_t readable,
                      const ColorTables& tables, uint8_t* out) {
  for (int32_t x = 0; x < width; x += 2, out += 4) {
    const uint32_t a = x < readable ? image[x] : 0;
    const uint32_t b = x + 1 < readable ? image[x + 1] : 0;
    if (a == 0 && b == 0) {
      std::memset(out, 0, 4);
      continue;
    }
    const Ycc pa = ToYcc(a, tables), pb = ToYcc(b, tables);
    if (a != 0 && b != 0) {
      out[0] = tables.LumaToStudio(static_cast<uint8_t>(pa.y));
      out[1] = Studio(tables, (pa.u + pb.u + 256) >> 1);
      out[2] = tables.LumaToStudio(static_cast<uint8_t>(pb.y));
      out[3] = Studio(tables, (pa.v + pb.v + 256) >> 1);
      continue;
    }
    const Ycc& only = a != 0 ? pa : pb;
    out[0] = a != 0 ? tables.LumaToStudio(static_cast<uint8_t>(pa.y)) : 0;
    out[1] = Studio(tables, only.u + 128);
    out[2] = b != 0 ? tables.LumaToStudio(static_cast<uint8_t>(pb.y)) : 0;
    out[3] = Studio(tables, only.v + 128);
  }
}

}  // namespace korvalin
