#include "platform/text_layout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace korvalin::platform {
namespace {

// Every character 10 pixels wide, so widths are easy to reason about.
int32_t TenPixels(std::size_t) {
  return 10;
}

std::vector<std::u32string> Lines(std::u32string_view text, std::optional<int32_t> wrap,
                                  std::vector<int32_t>* widths = nullptr) {
  std::vector<std::u32string> result;
  for (const TextLine& line : LayoutLines(text, TenPixels, wrap)) {
    result.emplace_back(text.substr(line.begin, line.end - line.begin));
    if (widths != nullptr) widths->push_back(line.width);
  }
  return result;
}

using LineList = std::vector<std::u32string>;

TEST(TextLayout, BreaksAtLineFeedsCarriageReturnsAndPairs) {
  EXPECT_EQ(Lines(U"ab\ncd\r\nef\rg", std::nullopt), (LineList{U"ab", U"cd", U"ef", U"g"}));
  EXPECT_EQ(Lines(U"ab\n", std::nullopt), (LineList{U"ab"}));  // no line after a final break
  EXPECT_EQ(Lines(U"ab\n\ncd", std::nullopt), (LineList{U"ab", U"", U"cd"}));
  EXPECT_TRUE(Lines(U"", std::nullopt).empty());
}

TEST(TextLayout, WrapsBetweenWordsWithoutCountingTheSpacesAtTheWrap) {
  std::vector<int32_t> widths;
  EXPECT_EQ(Lines(U"aaa bbb  ccc", 70, &widths), (LineList{U"aaa bbb", U"ccc"}));
  EXPECT_EQ(widths, (std::vector<int32_t>{70, 30}));
  EXPECT_EQ(Lines(U"aaa bbb ccc", 110), (LineList{U"aaa bbb ccc"}));
  EXPECT_EQ(Lines(U"aa bb\ncc dd", 40), (LineList{U"aa", U"bb", U"cc", U"dd"}));
}

TEST(TextLayout, AWordWiderThanTheLimitStandsAloneAndOverflows) {
  std::vector<int32_t> widths;
  EXPECT_EQ(Lines(U"a verylongword b", 50, &widths), (LineList{U"a", U"verylongword", U"b"}));
  EXPECT_EQ(widths, (std::vector<int32_t>{10, 120, 10}));
  EXPECT_EQ(Lines(U"verylongword", 0), (LineList{U"verylongword"}));
}

TEST(TextLayout, MeasuresTheWidestLineAndAllLines) {
  const TextExtent extent = MeasureLines(LayoutLines(U"ab\nabcd", TenPixels, std::nullopt), 17);
  EXPECT_EQ(extent.width, 40);
  EXPECT_EQ(extent.height, 34);
}

TEST(TextLayout, AlignsLinesInTheRectangle) {
  EXPECT_EQ(AlignedLineLeft(TextAlign::Left, 1, 101, 40), 1);
  EXPECT_EQ(AlignedLineLeft(TextAlign::Center, 1, 101, 40), 31);
  EXPECT_EQ(AlignedLineLeft(TextAlign::Right, 1, 101, 40), 61);
}

}  // namespace
}  // namespace korvalin::platform
