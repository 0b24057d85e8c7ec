#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/text_font.h"

namespace korvalin::platform {

// The fonts one text style draws with at one cell height: the style's own font and its
// bold, italic and bold italic variants, each made the first time it is asked for.
class TextFontSet {
 public:
  // Bold means at least this weight; a style already that heavy draws bold text unchanged.
  static constexpr int32_t kBoldWeight = 700;

  // Nothing when the style's own font cannot be made.
  static std::unique_ptr<TextFontSet> Create(std::string_view face, int32_t weight,
                                             int32_t cellHeight);

  TextFont& regular() { return *fonts_[0]; }
  int32_t cellHeight() const { return fonts_[0]->cellHeight(); }
  // The variant; the style's own font when a variant cannot be made.
  TextFont& Variant(bool bold, bool italic);

 private:
  TextFontSet(std::string face, int32_t weight, std::unique_ptr<TextFont> regular);

  std::string face_;
  int32_t weight_;
  std::array<std::unique_ptr<TextFont>, 4> fonts_;  // index: bold + 2 * italic
  std::array<bool, 4> tried_{true, false, false, false};
};

}  // namespace korvalin::platform
