#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/font_matcher.h"

namespace korvalin::platform {

// One glyph rasterised with 8-bit anti-aliased coverage, placed relative to the pen on the
// baseline: its top-left pixel lies `left` pixels right of the pen and `top` rows above the
// baseline.
struct GlyphImage {
  int32_t advance = 0;  // whole pixels the pen moves on
  int32_t left = 0;
  int32_t top = 0;
  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> coverage;  // width x height, row-major, 0 empty .. 255 covered
};

// A horizontal stroke of the face (underline, strike-through): its first row, counted down
// from the baseline (negative above it), and its thickness in rows.
struct LineMark {
  int32_t offset = 0;
  int32_t thickness = 1;
};

// A FreeType face scaled so that its cell (ascent + descent, from the font's Windows
// metrics when it has them) is a given number of pixels high.
class FontFace {
 public:
  // Cell heights are held to 1..kMaxCellHeight pixels.
  static constexpr int32_t kMaxCellHeight = 2000;

  // Nothing when the file cannot be read as a scalable face.
  static std::unique_ptr<FontFace> Open(const FontMatch& match, int32_t cellHeight);
  ~FontFace();
  FontFace(const FontFace&) = delete;
  FontFace& operator=(const FontFace&) = delete;

  int32_t ascent() const { return ascent_; }
  int32_t descent() const { return descent_; }
  LineMark underline() const { return underline_; }
  LineMark strikeOut() const { return strikeOut_; }

  // Glyph index of a code point in this face, 0 when the face lacks it.
  uint32_t GlyphIndex(char32_t codePoint) const;
  // The glyph, hinted and anti-aliased; an empty image with advance 0 when it cannot be
  // loaded.
  GlyphImage Render(uint32_t glyphIndex) const;

 private:
  struct FreeType;
  explicit FontFace(std::unique_ptr<FreeType> freeType);

  std::unique_ptr<FreeType> freeType_;
  bool embolden_ = false;
  int32_t ascent_ = 0;
  int32_t descent_ = 0;
  LineMark underline_;
  LineMark strikeOut_;
};

}  // namespace korvalin::platform
