#pragma once

#include <cstdint>

#include "video/color_tables.h"

namespace korvalin {

// Converts `pixels` output pixels from packed YUY2 (Y0 U Y1 V per pixel pair, studio range)
// to RGB. Reads (pixels + 1) / 2 whole macro-pixels; an odd count writes only the first
// pixel of the last pair.
using Yuy2ToRgbFunction = void (*)(const uint8_t* yuy2, uint8_t* out, int32_t pixels,
                                   const ColorTables& tables);

// The conversions into both RGB output formats, as one interchangeable set.
struct Yuy2ToRgbKernels {
  Yuy2ToRgbFunction toRgb32;
  Yuy2ToRgbFunction toRgb565;
};

// Scalar reference: RGB32 in memory order B, G, R and the tables' padding byte.
void Yuy2ToRgb32Scalar(const uint8_t* yuy2, uint8_t* out, int32_t pixels,
                       const ColorTables& tables);
// Scalar reference: RGB565 as little-endian 16-bit words.
void Yuy2ToRgb565Scalar(const uint8_t* yuy2, uint8_t* out, int32_t pixels,
                        const ColorTables& tables);

inline constexpr Yuy2ToRgbKernels kScalarYuy2ToRgb{Yuy2ToRgb32Scalar, Yuy2ToRgb565Scalar};

// The fastest set this processor runs; bit-exact with the scalar reference.
const Yuy2ToRgbKernels& FastestYuy2ToRgb();

}  // namespace korvalin
