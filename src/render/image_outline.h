#pragma once

#include <cstdint>

#include "platform/text_draw.h"

namespace korvalin {

// The dark colour of outlines, boxes and black text: opaque, and never taken for a glyph.
inline constexpr uint32_t kDarkPixel = 0x010101;

// Rings the glyphs of the top-left width x height part of an image with kDarkPixel: every
// transparent (0) pixel touching a glyph pixel, corners included, becomes dark. Glyph pixels
// are the opaque ones other than kDarkPixel; only those at least one pixel inside the image
// edge are looked at, which the drawing margin guarantees for all of them.
void OutlineGlyphs(const platform::SurfaceView& image, int32_t width, int32_t height);

}  // namespace korvalin
