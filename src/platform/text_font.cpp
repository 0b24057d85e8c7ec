#include "platform/text_font.h"

#include <algorithm>

namespace korvalin::platform {
namespace {

bool IsControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

}  // namespace

TextFont::TextFont(std::string face, int32_t weight, bool italic, int32_t cellHeight,
                   FontMatch match, std::unique_ptr<FontFace> primary)
    : face_(std::move(face)),
      weight_(weight),
      italic_(italic),
      cellHeight_(cellHeight),
      match_(std::move(match)) {
  facesByFile_[match_.file + '#' + std::to_string(match_.index)] = primary.get();
  faces_.push_back(std::move(primary));
}

std::unique_ptr<TextFont> TextFont::Create(std::string_view face, int32_t weight,
                                           int32_t cellHeight, bool italic) {
  const int32_t cell = std::clamp(cellHeight, 1, FontFace::kMaxCellHeight);
  std::optional<FontMatch> match = MatchFont(face, weight, italic);
  if (!match) return nullptr;
  std::unique_ptr<FontFace> primary = FontFace::Open(*match, cell);
  if (!primary) return nullptr;
  return std::unique_ptr<TextFont>(
      new TextFont(std::string(face), weight, italic, cell, std::move(*match), std::move(primary)));
}

const GlyphImage& TextFont::Glyph(char32_t codePoint) {
  auto found = glyphs_.find(codePoint);
  if (found == glyphs_.end()) found = glyphs_.emplace(codePoint, Rasterise(codePoint)).first;
  return found->second;
}

GlyphImage TextFont::Rasterise(char32_t codePoint) {
  if (IsControl(codePoint)) return {};
  const FontFace& primary = *faces_.front();
  if (const uint32_t index = primary.GlyphIndex(codePoint); index != 0) {
    return primary.Render(index);
  }
  // A fallback glyph is drawn on the primary face's baseline, as linked fonts are.
  if (const FontFace* fallback = FallbackFace(codePoint)) {
    return fallback->Render(fallback->GlyphIndex(codePoint));
  }
  return primary.Render(0);  // the face's missing-glyph box
}

const FontFace* TextFont::FallbackFace(char32_t codePoint) {
  std::optional<FontMatch> match = MatchFallbackFont(face_, weight_, codePoint, italic_);
  if (!match) return nullptr;
  const std::string key = match->file + '#' + std::to_string(match->index);
  if (auto known = facesByFile_.find(key); known != facesByFile_.end()) {
    const FontFace* face = known->second;  // null when the file could not be opened
    return face != nullptr && face->GlyphIndex(codePoint) != 0 ? face : nullptr;
  }
  std::unique_ptr<FontFace> face = FontFace::Open(*match, cellHeight_);
  const FontFace* opened = face.get();
  facesByFile_[key] = opened;
  if (!face || face->GlyphIndex(codePoint) == 0) return nullptr;
  faces_.push_back(std::move(face));
  return opened;
}

}  // namespace korvalin::platform
