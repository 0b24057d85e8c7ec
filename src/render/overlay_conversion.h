#pragma once

#include <cstdint>

#include "video/color_tables.h"

namespace korvalin {

// Row kernels that turn image words (red in the low byte, 0 transparent) into the output
// formats, keeping transparent pixels zero so blending can skip them.

// 4 bytes per pixel, blue first; transparent stays 0.
void ConvertRowToRgb32(const uint32_t* image, int32_t width, uint8_t* out);

// One 16-bit word per pixel; an opaque pixel that would come out 0 becomes 0x0821.
void ConvertRowToRgb565(const uint32_t* image, int32_t width, uint8_t* out);

// Studio-range Y0 U Y1 V per pixel pair; a transparent pixel's luma is 0 and a pair's chroma
// comes from its opaque pixels only. `width` pixels are converted, pairs rounded up; a
// pixel at or beyond `readable` counts as transparent.
void ConvertRowToYuy2(const uint32_t* image, int32_t width, int32_t readable,
                      const ColorTables& tables, uint8_t* out);

}  // namespace korvalin
