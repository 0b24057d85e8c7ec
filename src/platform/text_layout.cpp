#include "platform/text_layout.h"

#include <algorithm>

namespace korvalin::platform {
namespace {

bool IsBreak(char32_t c) {
  return c == U'\n' || c == U'\r';
}

// Wraps one hard line [begin, end) greedily into lines no wider than wrapWidth.
void WrapLine(std::u32string_view text, std::size_t begin, std::size_t end,
              const AdvanceFunction& advance, int32_t wrapWidth, std::vector<TextLine>& lines) {
  std::size_t start = begin;
  while (true) {
    int32_t x = 0;
    std::size_t breakAt = start;  // end of the words before the latest run of spaces
    int32_t breakWidth = 0;
    std::size_t i = start;
    bool wrapped = false;
    while (i < end) {
      const char32_t c = text[i];
      const bool space = c == U' ';
      if (space && (i == start || text[i - 1] != U' ')) {
        if (x > wrapWidth && i > start) {  // a word wider than the limit ends here
          breakAt = i, breakWidth = x, wrapped = true;
          break;
        }
        breakAt = i, breakWidth = x;
      }
      const int32_t w = advance(i);
      if (!space && x + w > wrapWidth && breakAt > start) {
        wrapped = true;
        break;
      }
      x += w;
      ++i;
    }
    if (!wrapped) {
      lines.push_back({start, end, x});
      return;
    }
    lines.push_back({start, breakAt, breakWidth});
    start = breakAt;
    while (start < end && text[start] == U' ') ++start;
    if (start == end) return;
  }
}

int32_t LineWidth(std::size_t begin, std::size_t end, const AdvanceFunction& advance) {
  int32_t width = 0;
  for (std::size_t i = begin; i < end; ++i) width += advance(i);
  return width;
}

}  // namespace

std::vector<TextLine> LayoutLines(std::u32string_view text, const AdvanceFunction& advance,
                                  std::optional<int32_t> wrapWidth) {
  std::vector<TextLine> lines;
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t end = begin;
    while (end < text.size() && !IsBreak(text[end])) ++end;
    if (wrapWidth) {
      WrapLine(text, begin, end, advance, *wrapWidth, lines);
    } else {
      lines.push_back({begin, end, LineWidth(begin, end, advance)});
    }
    begin = end;
    if (begin < text.size() && text[begin] == U'\r') ++begin;
    if (begin < text.size() && text[begin] == U'\n') ++begin;
  }
  return lines;
}

TextExtent MeasureLines(const std::vector<TextLine>& lines, int32_t lineHeight) {
  TextExtent extent;
  for (const TextLine& line : lines) extent.width = std::max(extent.width, line.width);
  extent.height = static_cast<int32_t>(lines.size()) * lineHeight;
  return extent;
}

int32_t AlignedLineLeft(TextAlign align, int32_t left, int32_t right, int32_t lineWidth) {
  switch (align) {
    case TextAlign::Center:
      return (left + right - lineWidth) / 2;
    case TextAlign::Right:
      return right - lineWidth;
    case TextAlign::Left:
      break;
  }
  return left;
}

}  // namespace korvalin::platform
