#include "platform/text_draw.h"

#include <algorithm>

namespace korvalin::platform {
namespace {

uint32_t BlendChannel(uint32_t text, uint32_t under, uint32_t coverage) {
  return (text * coverage + under * (255 - coverage) + 127) / 255;
}

// Colour over the pixel in proportion to coverage; the top byte of a drawn pixel is 0.
uint32_t BlendPixel(uint32_t colour, uint32_t under, uint8_t coverage) {
  uint32_t result = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    result |= BlendChannel(colour >> shift & 0xFF, under >> shift & 0xFF, coverage) << shift;
  }
  return result;
}

void DrawGlyph(const GlyphImage& glyph, int32_t penX, int32_t baseline, uint32_t colour,
               const TextRect& clip, const SurfaceView& surface) {
  const int32_t left = penX + glyph.left;
  const int32_t top = baseline - glyph.top;
  const int32_t x0 = std::max(left, clip.left), x1 = std::min(left + glyph.width, clip.right);
  const int32_t y0 = std::max(top, clip.top), y1 = std::min(top + glyph.height, clip.bottom);
  for (int32_t y = y0; y < y1; ++y) {
    const uint8_t* coverage = glyph.coverage.data() + static_cast<size_t>(y - top) * glyph.width;
    uint32_t* row = surface.Row(y);
    for (int32_t x = x0; x < x1; ++x) {
      const uint8_t c = coverage[x - left];
      if (c != 0) row[x] = BlendPixel(colour, row[x], c);
    }
  }
}

}  // namespace

std::vector<TextLine> LayoutText(TextFont& font, std::u32string_view text, TextFormat format,
                                 int32_t wrapWidth) {
  const AdvanceFunction advance = [&font](char32_t c) { return font.Advance(c); };
  return LayoutLines(text, advance,
                     format.wordBreak ? std::optional<int32_t>(wrapWidth) : std::nullopt);
}

TextExtent MeasureText(TextFont& font, std::u32string_view text, TextFormat format,
                       int32_t wrapWidth) {
  return MeasureLines(LayoutText(font, text, format, wrapWidth), font.cellHeight());
}

void DrawText(TextFont& font, std::u32string_view text, TextFormat format, TextRect rect,
              uint32_t colour, const SurfaceView& surface) {
  const TextRect clip{std::max(rect.left, 0), std::max(rect.top, 0),
                      std::min(rect.right, surface.width), std::min(rect.bottom, surface.height)};
  if (clip.left >= clip.right || clip.top >= clip.bottom) return;
  const std::vector<TextLine> lines = LayoutText(font, text, format, rect.right - rect.left);
  int32_t lineTop = rect.top;
  for (const TextLine& line : lines) {
    if (lineTop >= clip.bottom) break;
    int32_t penX = AlignedLineLeft(format.align, rect.left, rect.right, line.width);
    const int32_t baseline = lineTop + font.ascent();
    for (size_t i = line.begin; i < line.end; ++i) {
      const GlyphImage& glyph = font.Glyph(text[i]);
      DrawGlyph(glyph, penX, baseline, colour, clip, surface);
      penX += glyph.advance;
    }
    lineTop += font.cellHeight();
  }
}

}  // namespace korvalin::platform
