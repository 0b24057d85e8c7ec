#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/font_face.h"

namespace korvalin::platform {

// A font as text drawing uses it: a face name, weight and slant at a cell height, with
// fallback faces for code points the face lacks. Glyphs are rasterised once and kept.
class TextFont {
 public:
  // Nothing when no installed face can be opened. An italic font of a family without an
  // italic face is its upright face slanted.
  static std::unique_ptr<TextFont> Create(std::string_view face, int32_t weight, int32_t cellHeight,
                                          bool italic = false);

  int32_t cellHeight() const { return cellHeight_; }
  int32_t ascent() const { return faces_.front()->ascent(); }
  LineMark underline() const { return faces_.front()->underline(); }
  LineMark strikeOut() const { return faces_.front()->strikeOut(); }
  const FontMatch& match() const { return match_; }

  // The glyph of a code point; control characters are empty and take no room.
  const GlyphImage& Glyph(char32_t codePoint);
  int32_t Advance(char32_t codePoint) { return Glyph(codePoint).advance; }

 private:
  TextFont(std::string face, int32_t weight, bool italic, int32_t cellHeight, FontMatch match,
           std::unique_ptr<FontFace> primary);
  GlyphImage Rasterise(char32_t codePoint);
  // The face to draw a code point the primary face lacks, nullptr when none holds it.
  const FontFace* FallbackFace(char32_t codePoint);

  std::string face_;
  int32_t weight_;
  bool italic_;
  int32_t cellHeight_;
  FontMatch match_;
  std::vector<std::unique_ptr<FontFace>> faces_;  // the primary face first
  std::unordered_map<std::string, const FontFace*> facesByFile_;
  std::unordered_map<char32_t, GlyphImage> glyphs_;
};

}  // namespace korvalin::platform
