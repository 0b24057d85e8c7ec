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

// An underline or strike-through under one code point: fully covered pixels of the colour.
void DrawStroke(LineMark mark, int32_t penX, int32_t advance, int32_t baseline, uint32_t colour,
                const TextRect& clip, const SurfaceView& surface) {
  const int32_t x0 = std::max(penX, clip.left), x1 = std::min(penX + advance, clip.right);
  const int32_t y0 = std::max(baseline + mark.offset, clip.top);
  const int32_t y1 = std::min(baseline + mark.offset + mark.thickness, clip.bottom);
  for (int32_t y = y0; y < y1; ++y) {
    uint32_t* row = surface.Row(y);
    for (int32_t x = x0; x < x1; ++x) row[x] = BlendPixel(colour, row[x], 255);
  }
}

TextFont& FontOf(TextFontSet& fonts, const TextStyle& style) {
  return fonts.Variant(style.bold, style.italic);
}

// How far a line's last glyph, when italic, leans right of where its advance ends.
int32_t ItalicOverhang(TextFontSet& fonts, const StyledText& text, const TextLine& line,
                       StyleCursor& styles) {
  if (line.end == line.begin) return 0;
  const TextStyle style = styles.At(line.end - 1);
  if (!style.italic) return 0;
  const GlyphImage& glyph = FontOf(fonts, style).Glyph(text.text[line.end - 1]);
  return std::max(0, glyph.left + glyph.width - glyph.advance);
}

void DrawLines(TextFontSet& fonts, const StyledText& text, const std::vector<TextLine>& lines,
               TextAlign align, TextRect rect, uint32_t colour, const TextRect& clip,
               const SurfaceView& surface) {
  TextFont& own = fonts.regular();
  StyleCursor styles(text.runs);
  int32_t lineTop = rect.top;
  for (const TextLine& line : lines) {
    if (lineTop >= clip.bottom) break;
    int32_t penX = AlignedLineLeft(align, rect.left, rect.right, line.width);
    const int32_t baseline = lineTop + own.ascent();
    for (size_t i = line.begin; i < line.end; ++i) {
      const TextStyle style = styles.At(i);
      const uint32_t drawn = style.colour.value_or(colour);
      const GlyphImage& glyph = FontOf(fonts, style).Glyph(text.text[i]);
      DrawGlyph(glyph, penX, baseline, drawn, clip, surface);
      if (style.underline) {
        DrawStroke(own.underline(), penX, glyph.advance, baseline, drawn, clip, surface);
      }
      if (style.strikeOut) {
        DrawStroke(own.strikeOut(), penX, glyph.advance, baseline, drawn, clip, surface);
      }
      penX += glyph.advance;
    }
    lineTop += own.cellHeight();
  }
}

}  // namespace

std::vector<TextLine> LayoutText(TextFontSet& fonts, const StyledText& text, TextFormat format,
                                 int32_t wrapWidth) {
  std::vector<int32_t> advances(text.text.size());
  StyleCursor styles(text.runs);
  for (std::size_t i = 0; i < advances.size(); ++i) {
    advances[i] = FontOf(fonts, styles.At(i)).Advance(text.text[i]);
  }
  const AdvanceFunction advance = [&advances](std::size_t i) { return advances[i]; };
  std::vector<TextLine> lines = LayoutLines(
      text.text, advance, format.wordBreak ? std::optional<int32_t>(wrapWidth) : std::nullopt);
  StyleCursor lineEnds(text.runs);
  for (TextLine& line : lines) line.width += ItalicOverhang(fonts, text, line, lineEnds);
  return lines;
}

TextExtent MeasureText(TextFontSet& fonts, const StyledText& text, TextFormat format,
                       int32_t wrapWidth) {
  return MeasureLines(LayoutText(fonts, text, format, wrapWidth), fonts.cellHeight());
}

void DrawText(TextFontSet& fonts, const StyledText& text, TextFormat format, TextRect rect,
              uint32_t colour, const SurfaceView& surface) {
  const TextRect clip{std::max(rect.left, 0), std::max(rect.top, 0),
                      std::min(rect.right, surface.width), std::min(rect.bottom, surface.height)};
  if (clip.left >= clip.right || clip.top >= clip.bottom) return;
  DrawLines(fonts, text, LayoutText(fonts, text, format, rect.right - rect.left), format.align,
            rect, colour, clip, surface);
}

}  // namespace korvalin::platform
