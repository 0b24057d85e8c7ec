#include "render/image_outline.h"

namespace korvalin {
namespace {

bool IsGlyphPixel(uint32_t word) {
  return static_cast<int32_t>(word) > 0 && word != kDarkPixel;
}

void DarkenIfTransparent(uint32_t& word) {
  if (word == 0) word = kDarkPixel;
}

}  // namespace

void OutlineGlyphs(const platform::SurfaceView& image, int32_t width, int32_t height) {
  if (width > image.width) width = image.width;
  if (height > image.height) height = image.height;
  for (int32_t y = 1; y < height - 1; ++y) {
    uint32_t* above = image.Row(y - 1);
    uint32_t* row = image.Row(y);
    uint32_t* below = image.Row(y + 1);
    bool previousWasGlyph = false;
    for (int32_t x = 1; x < width - 1; ++x) {
      if (!IsGlyphPixel(row[x])) {
        previousWasGlyph = false;
        continue;
      }
      // Inside a run of glyph pixels the previous one already marked this column and the
      // one to its left.
      if (!previousWasGlyph) {
        for (uint32_t* r : {above, row, below}) DarkenIfTransparent(r[x - 1]);
        DarkenIfTransparent(above[x]);
        DarkenIfTransparent(below[x]);
      }
      DarkenIfTransparent(above[x + 1]);
      DarkenIfTransparent(row[x + 1]);
      DarkenIfTransparent(below[x + 1]);
      previousWasGlyph = true;
    }
  }
}

}  // namespace korvalin
