#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/text_font_set.h"
#include "platform/text_layout.h"
#include "platform/text_runs.h"

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

// The lines of a text, each code point measured with the font of its style, wrapped for a
// rectangle wrapWidth pixels wide when the format asks for word breaks. A line that ends in
// an italic glyph also counts the part of it that leans past its advance, so it is not cut.
std::vector<TextLine> LayoutText(TextFontSet& fonts, const StyledText& text, TextFormat format,
                                 int32_t wrapWidth);

// Measures as DrawText with DT_CALCRECT: the widest line and the height of all lines.
TextExtent MeasureText(TextFontSet& fonts, const StyledText& text, TextFormat format,
                       int32_t wrapWidth);

// Draws the text into the rectangle as DrawText does with a transparent background: laid out
// for the rectangle's width, each line aligned in it, one cell height below the last, on the
// baseline of the set's own font; glyph coverage blends each code point's colour (its
// style's, else `colour`; 0x00BBGGRR) over the pixels already there, and underline and
// strike-through are solid strokes across the styled code points' advances. Nothing is drawn
// outside the rectangle or the surface.
void DrawText(TextFontSet& fonts, const StyledText& text, TextFormat format, TextRect rect,
              uint32_t colour, const SurfaceView& surface);

}  // namespace korvalin::platform
