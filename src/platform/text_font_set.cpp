#include "platform/text_font_set.h"

#include <utility>

namespace korvalin::platform {

TextFontSet::TextFontSet(std::string face, int32_t weight, std::unique_ptr<TextFont> regular)
    : face_(std::move(face)), weight_(weight) {
  fonts_[0] = std::move(regular);
}

std::unique_ptr<TextFontSet> TextFontSet::Create(std::string_view face, int32_t weight,
                                                 int32_t cellHeight) {
  std::unique_ptr<TextFont> regular = TextFont::Create(face, weight, cellHeight);
  if (!regular) return nullptr;
  return std::unique_ptr<TextFontSet>(
      new TextFontSet(std::string(face), weight, std::move(regular)));
}

TextFont& TextFontSet::Variant(bool bold, bool italic) {
  if (weight_ >= kBoldWeight) bold = false;  // already bold: the same font
  const std::size_t index = (bold ? 1 : 0) + (italic ? 2 : 0);
  if (!tried_[index]) {
    tried_[index] = true;
    fonts_[index] = TextFont::Create(face_, bold ? kBoldWeight : weight_, cellHeight(), italic);
  }
  return fonts_[index] ? *fonts_[index] : *fonts_[0];
}

}  // namespace korvalin::platform
