#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace korvalin::platform {

// Horizontal alignment of each line within the drawing rectangle.
enum class TextAlign : int32_t { Left = 0, Center = 1, Right = 2 };

// One laid-out line: the code points [begin, end) of the text and their width in pixels.
struct TextLine {
  std::size_t begin = 0;
  std::size_t end = 0;
  int32_t width = 0;
};

// The advance in pixels of the code point at an index of the text, so that each may have a
// font of its own.
using AdvanceFunction = std::function<int32_t(std::size_t index)>;

// Splits text into lines as DrawText does: at CR, LF and CR LF (a break at the very end
// starts no further line), and, when wrapWidth is given, between words so that a line
// fits in wrapWidth pixels. A word wider than that stands alone on its line and may exceed
// it; the spaces at a wrap belong to neither line.
std::vector<TextLine> LayoutLines(std::u32string_view text, const AdvanceFunction& advance,
                                  std::optional<int32_t> wrapWidth);

// The size DrawText reports for its measuring pass: the widest line, and the number of
// lines times the line height.
struct TextExtent {
  int32_t width = 0;
  int32_t height = 0;
};
TextExtent MeasureLines(const std::vector<TextLine>& lines, int32_t lineHeight);

// Left edge of a line aligned between the rectangle's left and right edges.
int32_t AlignedLineLeft(TextAlign align, int32_t left, int32_t right, int32_t lineWidth);

}  // namespace korvalin::platform
