#include "platform/code_page.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace korvalin::platform {
namespace {

TEST(CodePage, CharsetNumbersNameTheirCodePages) {
  const std::pair<int32_t, int> table[] = {
      {0, 1252},   {177, 1255}, {178, 1256}, {161, 1253}, {162, 1254}, {186, 1257}, {238, 1250},
      {204, 1251}, {163, 1258}, {255, 437},  {77, 10000}, {129, 949},  {999, 1252}};
  for (const auto& [charset, codePage] : table) {
    EXPECT_EQ(CodePageOfCharset(charset), codePage) << charset;
    EXPECT_TRUE(IsSupportedCodePage(codePage)) << codePage;
  }
}

TEST(CodePage, DecodesEachPagesOwnLetters) {
  struct Case {
    int codePage;
    std::string bytes;
    std::u32string text;
  };
  const Case cases[] = {
      {1251, "\xCF\xF0\xE8\xE2\xE5\xF2", U"Привет"},
      {1252, "caf\xE9 \x80", U"café €"},
      {1253, "\xC1\xE8\xDE\xED\xE1", U"Αθήνα"},
      {1250, "\xB3\xF3\xBF\xEA\xB9", U"łóżęą"},
      {10000, "\x80\x8A", U"Ää"},
      {437, "\xC9\xCD\xBB", U"╔═╗"},
      {949, "\xC7\xD1\xB1\xDB", U"한글"},
      {1258, "Vi\xEA\xCCt", U"Vi\u00EA\u0300t"},  // the page's combining grave stays a mark
  };
  for (const Case& c : cases) {
    const std::u32string decoded = DecodeCodePage(c.bytes, c.codePage);
    if (c.codePage == 1258) {  // iconv may compose the base letter and the mark
      EXPECT_TRUE(decoded == c.text || decoded == U"Vi\u1EC1t") << c.codePage;
    } else {
      EXPECT_EQ(decoded, c.text) << c.codePage;
    }
  }
}

TEST(CodePage, UndefinedBytesBecomeReplacementsAndEncodeMarksWhatThePageLacks) {
  EXPECT_EQ(DecodeCodePage("a\x81z", 1252), U"a\uFFFDz");
  EXPECT_EQ(DecodeCodePage("\xC7", 949), U"\uFFFD");  // a cut-off double-byte letter
  EXPECT_EQ(EncodeCodePage(U"Привет", 1251), "\xCF\xF0\xE8\xE2\xE5\xF2");
  EXPECT_EQ(EncodeCodePage(U"a€日", 1252), "a\x80?");
}

TEST(CodePage, MultiByteUtf8IsRecognisedOnlyWhenWellFormed) {
  const std::pair<std::string, bool> cases[] = {
      {"Привет", true},
      {"plain ASCII", false},
      {"", false},
      {"caf\xE9", false},
      {"\xC0\xAF", false},
      {"\xED\xA0\x80", false},
      {"\xF4\x90\x80\x80", false},
      {"\xD0", false},
      {"ok \xE2\x82\xAC", true},
  };
  for (const auto& [bytes, multiByte] : cases)
    EXPECT_EQ(IsMultiByteUtf8(bytes), multiByte) << bytes;
}

TEST(CodePage, SubtitleTextIsUtf8WhenItHoldsAMultiByteSequenceElseTheCodePage) {
  EXPECT_EQ(DecodeSubtitleText("Ёлка", 1252), U"Ёлка");
  EXPECT_EQ(DecodeSubtitleText("\xA8\xEB\xEA\xE0", 1251), U"Ёлка");
  EXPECT_EQ(DecodeSubtitleText("plain", 1251), U"plain");
  EXPECT_EQ(EncodeUtf8(DecodeUtf8("Ёлка 😀")), "Ёлка 😀");
}

TEST(CodePage, SystemCodePageFollowsTheEnvironment) {
  const std::pair<const char*, int> cases[] = {
      {"1251", 1251},  {"cp1250", 1250}, {"windows-1253", 1253},
      {"65001", 1252}, {"latin", 1252},  {"", 1252},
  };
  for (const auto& [value, codePage] : cases) {
    setenv("KORVALIN_CODEPAGE", value, 1);
    EXPECT_EQ(SystemCodePage(), codePage) << value;
  }
  unsetenv("KORVALIN_CODEPAGE");
  EXPECT_EQ(SystemCodePage(), 1252);
}

}  // namespace
}  // namespace korvalin::platform
