#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/text_font.h"
#include "platform/text_layout.h"

namespace korvalin::platform {

// A 32-bit pixel surface addressed by rows from the top; the stride may be negative for
// surfaces stored bottom-up. Pixel words hold red in the low byte, then green and blue.
struct SurfaceView {
  uint8_t* topRow = nullptr;
  std::ptrdiff_t stride = 0;  // bytes from one row to the next one down
  int32_t width = 0;
  int32_t height = 0;

  uint32_t* Row(int32_t y) const { return reinterpret_cast<uint32_t*>(topRow + y * stride); }
};

struct TextRect {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};

struct TextFormat {
  TextAlign align = TextAlign::Left;
  bool wordBreak = false;  // wrap lines at the rectangle's width
};

// The lines of a text laid out with the font for a rectangle wrapWidth pixels wide.
std::vector<TextLine> LayoutText(TextFont& font, std::u32string_view text, TextFormat format,
                                 int32_t wrapWidth);

// Measures as DrawText with DT_CALCRECT: the widest line and the height of all lines,
// wrapping at wrapWidth when the format asks for word breaks.
TextExtent MeasureText(TextFont& font, std::u32string_view text, TextFormat format,
                       int32_t wrapWidth);

// Draws the text into the rectangle as DrawText does with a transparent background: each
// line aligned in the rectangle, one cell height below the last; glyph coverage blends the
// colour (0x00BBGGRR) over the pixels already there. Nothing is drawn outside the
// rectangle or the surface.
void DrawText(TextFont& font, std::u32string_view text, TextFormat format, TextRect rect,
              uint32_t colour, const SurfaceView& surface);

}  // namespace korvalin::platform
