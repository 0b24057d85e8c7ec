#include "video/yuy2_to_rgb.h"

#include "video/yuy2_to_rgb_sse2.h"

namespace korvalin {

namespace {

struct Rgb {
  uint8_t r, g, b;
};

// Studio-range BT.601 in 16.16 fixed point; the chroma offsets for U = V = 128 and the
// rounding half are folded into the constants, so black (16, 128, 128) gives exactly 0.
inline Rgb PixelToRgb(int32_t y, int32_t u, int32_t v, const uint8_t* saturate) {
  const int32_t c = (y - 16) * 76309;
  return {saturate[(c + 104595 * v - 13355392) >> 16],
          saturate[(c - 25625 * u - 53281 * v + 10132736) >> 16],
          saturate[(c + 132252 * u - 16895488) >> 16]};
}

inline void StoreRgb32(Rgb p, uint8_t padding, uint8_t* out) {
  out[0] = p.b;
  out[1] = p.g;
  out[2] = p.r;
  out[3] = padding;
}

inline void StoreRgb565(Rgb p, uint8_t /*padding*/, uint8_t* out) {
  const uint16_t word =
      static_cast<uint16_t>(((p.r & 0xF8) << 8) | ((p.g & 0xFC) << 3) | (p.b >> 3));
  out[0] = static_cast<uint8_t>(word);
  out[1] = static_cast<uint8_t>(word >> 8);
}

template <int kBytesPerPixel, void (*Store)(Rgb, uint8_t, uint8_t*)>
void ConvertPixels(const uint8_t* yuy2, uint8_t* out, int32_t pixels, const ColorTables& tables) {
  const uint8_t* saturate = tables.SaturationOrigin();
  const uint8_t padding = tables.Rgb32Padding();
  for (int32_t pair = 0; pair < pixels / 2; ++pair, yuy2 += 4, out += 2 * kBytesPerPixel) {
    Store(PixelToRgb(yuy2[0], yuy2[1], yuy2[3], saturate), padding, out);
    Store(PixelToRgb(yuy2[2], yuy2[1], yuy2[3], saturate), padding, out + kBytesPerPixel);
  }
  if (pixels % 2 == 1) Store(PixelToRgb(yuy2[0], yuy2[1], yuy2[3], saturate), padding, out);
}

}  // namespace

void Yuy2ToRgb32Scalar(const uint8_t* yuy2, uint8_t* out, int32_t pixels,
                       const ColorTables& tables) {
  ConvertPixels<4, StoreRgb32>(yuy2, out, pixels, tables);
}

void Yuy2ToRgb565Scalar(const uint8_t* yuy2, uint8_t* out, int32_t pixels,
                        const ColorTables& tables) {
  ConvertPixels<2, StoreRgb565>(yuy2, out, pixels, tables);
}

const Yuy2ToRgbKernels& FastestYuy2ToRgb() {
#if defined(__SSE2__)
  return kSse2Yuy2ToRgb;
#else
  return kScalarYuy2ToRgb;
#endif
}

}  // namespace korvalin
