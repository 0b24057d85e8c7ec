#include "base/dyn_string.h"

#include <gtest/gtest.h>

#include <tuple>

#include "base/string_search.h"

namespace korvalin {
namespace {

TEST(DynString, GrowthFollowsTwentyPlusSixFifths) {
  DynString s;
  EXPECT_EQ(s.data(), nullptr);
  EXPECT_STREQ(s.c_str(), "");
  s.Assign("abcd");  // 5 bytes: 20 + 6
  EXPECT_EQ(s.Capacity(), 26u);
  s.Reserve(101);  // 20 + 121
  EXPECT_EQ(s.Capacity(), 141u);
  s.Reserve(50);
  EXPECT_EQ(s.Capacity(), 141u);
  EXPECT_EQ(s, "abcd");
  s.Assign(nullptr);
  EXPECT_EQ(s.Capacity(), 0u);
  EXPECT_EQ(s.data(), nullptr);
}

TEST(DynString, AppendGrowsAndKeepsContent) {
  DynString s;
  s.Append(nullptr);
  EXPECT_EQ(s.data(), nullptr);
  s.Append("ab");
  for (int i = 0; i < 100; ++i) s.AppendChar('x');
  EXPECT_EQ(s.Length(), 102u);
  s.Append(s.c_str());  // appending itself must survive the reallocation
  EXPECT_EQ(s.Length(), 204u);
  EXPECT_EQ(s.Left(4), "abxx");
}

TEST(DynString, Substrings) {
  const DynString s("abc");
  const std::pair<DynString, const char*> cases[] = {
      {s.Right(4), "abc"}, {s.Right(2), "bc"},  {s.Left(0), ""},
      {s.Left(9), "abc"},  {s.Mid(5), ""},      {s.Mid(1), "bc"},
      {s.Mid(1, 1), "b"},  {s.Mid(1, 9), "bc"}, {s.Concat("d"), "abcd"}};
  for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
  EXPECT_EQ(s.Find("c"), 2);
  EXPECT_EQ(s.Find("c", 3), -1);
}

TEST(DynString, Replace) {
  constexpr int kAll = DynString::kReplaceAll, kRepeat = DynString::kReplaceRepeat;
  // text, find, with, flags, result, count
  const std::tuple<const char*, const char*, const char*, int, const char*, int> cases[] = {
      {"a.a.a", ".", "-", 0, "a-a.a", 1},
      {"a.a.a", ".", "-", kAll, "a-a-a", 2},
      {"aaa", "a", "aa", kAll, "aaaaaa", 3},  // search goes on after it
      {"a    b", "  ", " ", kAll, "a  b", 2},
      {"a    b", "  ", " ", kAll | kRepeat, "a b", 3},
      {"a  b", "  ", " x ", kAll | kRepeat, "a x b", 1},
      {"", "a", "b", kAll, "", 0},
      {"abc", "", "x", kAll, "abc", 0},
  };
  for (const auto& [text, find, with, flags, want, count] : cases) {
    DynString s(text);
    EXPECT_EQ(s.Replace(find, with, flags), count) << text << " " << flags;
    EXPECT_EQ(s, want) << text << " " << flags;
  }
}

TEST(DynString, TrimRemovesSpaceAndControlBytesOnly) {
  DynString s(" \t\x01 a\xA0 \r\n");
  s.TrimLeft();
  EXPECT_EQ(s, "a\xA0 \r\n");
  s.TrimRight();
  EXPECT_EQ(s, "a\xA0");
  DynString blank("  ");
  blank.TrimRight();
  EXPECT_TRUE(blank.IsEmpty());
}

TEST(StringSearch, FindAndCompare) {
  EXPECT_EQ(FindChar("abcabc", 'c', 3), 5);
  EXPECT_EQ(FindChar("abc", 'a', 3), -1);
  EXPECT_EQ(FindChar(nullptr, 'a', 0), -1);
  EXPECT_EQ(FindText("abcabc", "bc", 2), 4);
  EXPECT_EQ(FindText("abc", "x", 0), -1);
  EXPECT_EQ(CompareText("a", "\xE0"), -1);  // unsigned bytes
  EXPECT_EQ(CompareText(nullptr, ""), 0);
  EXPECT_EQ(CompareText("b", "a"), 1);
  EXPECT_EQ(CompareTextNoCase("ABC", "abc"), 0);
  EXPECT_EQ(CompareTextNoCase("abc", "ABD"), -1);
}

}  // namespace
}  // namespace korvalin
