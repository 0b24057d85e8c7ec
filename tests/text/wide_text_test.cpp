#include "text/wide_text.h"

#include <gtest/gtest.h>

#include <string>

namespace korvalin {
namespace {

TEST(FindByteOrderMark, NamesEachMarkAndPrefersUtf32ToUtf16) {
  const struct {
    std::string head;
    TextEncoding encoding;
    std::size_t length;
  } cases[] = {
      {std::string("\xFF\xFE\x00\x00", 4), TextEncoding::kUtf32Le, 4},
      {std::string("\x00\x00\xFE\xFF", 4), TextEncoding::kUtf32Be, 4},
      {std::string("\xFF\xFE\x41\x00", 4), TextEncoding::kUtf16Le, 2},
      {std::string("\xFE\xFF\x00\x41", 4), TextEncoding::kUtf16Be, 2},
      {"\xEF\xBB\xBF"
       "1",
       TextEncoding::kUtf8, 3},
      {std::string("\xFF\xFE", 2), TextEncoding::kUtf16Le, 2},  // a mark alone
      {std::string("\x00\x00\xFE", 3), TextEncoding::kBytes, 0},
      {"1\n00:00", TextEncoding::kBytes, 0},
      {"", TextEncoding::kBytes, 0},
  };
  for (const auto& c : cases) {
    const ByteOrderMark mark = FindByteOrderMark(c.head);
    EXPECT_EQ(mark.encoding, c.encoding) << c.head;
    EXPECT_EQ(mark.length, c.length) << c.head;
  }
  EXPECT_FALSE(IsWideEncoding(TextEncoding::kUtf8));
  EXPECT_TRUE(IsWideEncoding(TextEncoding::kUtf32Be));
}

TEST(WideTextToUtf8, ConvertsBothWidthsAndByteOrdersAndReplacesWhatIsInvalid) {
  const std::string replacement = "\xEF\xBF\xBD";
  const struct {
    std::string units;
    TextEncoding encoding;
    std::string utf8;
  } cases[] = {
      // "Aé€" and U+1F600 as a surrogate pair; CR LF stays for text mode to fold.
      {std::string("A\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE\r\0\n\0", 14), TextEncoding::kUtf16Le,
       "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\r\n"},
      {std::string("\0A\0\xE9\xD8\x3D\xDE\x00", 8), TextEncoding::kUtf16Be,
       "A\xC3\xA9\xF0\x9F\x98\x80"},
      {std::string("\x3D\xD8"
                   "A\0",
                   4),
       TextEncoding::kUtf16Le, replacement + "A"},                          // high alone
      {std::string("\x00\xDE", 2), TextEncoding::kUtf16Le, replacement},    // low alone
      {std::string("A\0B", 3), TextEncoding::kUtf16Le, "A" + replacement},  // cut off
      {std::string("\x00\xF6\x01\x00\x41\0\0\0", 8), TextEncoding::kUtf32Le,
       "\xF0\x9F\x98\x80"
       "A"},
      {std::string("\0\0\0A\0\x11\0\0\0\0\xD8\0\0\0", 14), TextEncoding::kUtf32Be,
       "A" + replacement + replacement + replacement},  // above U+10FFFF, a surrogate, cut off
      {"plain", TextEncoding::kBytes, "plain"},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(WideTextToUtf8(cases[i].units, cases[i].encoding), cases[i].utf8) << i;
  }
}

}  // namespace
}  // namespace korvalin
