#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/std_file.h"
#include "subtitles/language_name.h"
#include "subtitles/line_reader.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

std::vector<std::string> Lines(const std::string& bytes, std::size_t size) {
  StdFile file;
  EXPECT_EQ(file.OpenMemory(bytes.data(), bytes.size(), "rb"), 0);
  std::vector<std::string> lines;
  std::vector<char> buffer(size);
  while (ReadLine(file, buffer.data(), size) == 0) lines.emplace_back(buffer.data());
  return lines;
}

TEST(ReadLine, SplitsAtLineFeedsNulsAndBufferSize) {
  using L = std::vector<std::string>;
  EXPECT_EQ(Lines("a\nb", 1024), (L{"a\n", "b"}));
  EXPECT_EQ(Lines(std::string("ab\0cd\ne", 7), 1024), (L{"ab", "cd\n", "e"}));
  EXPECT_EQ(Lines(std::string("a\n\0b\n", 5), 1024), (L{"a\n"}));  // NUL first: ends input
  const L pieces = Lines(std::string(1500, 'x') + "\n", 1024);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0].size(), 1023u);
  EXPECT_EQ(pieces[1].size(), 478u);  // 477 bytes and the line feed
}

TEST(ReadLineString, HasNoLengthLimit) {
  const std::string bytes = std::string(5000, 'y') + "\nz";
  StdFile file;
  ASSERT_EQ(file.OpenMemory(bytes.data(), bytes.size(), "rb"), 0);
  DynString line;
  ASSERT_EQ(ReadLineString(file, line), 0);
  EXPECT_EQ(line.Length(), 5001u);
  RemoveLineFeed(line);
  EXPECT_EQ(line.Length(), 5000u);
  ASSERT_EQ(ReadLineString(file, line), 0);
  EXPECT_EQ(line, "z");
  EXPECT_EQ(ReadLineString(file, line), 1);
}

TEST(TimeScanners, FollowTheirPatterns) {
  using Scanner = int32_t (*)(const char*);
  struct Case {
    Scanner scan;
    const char* text;
    int32_t ms;
  };
  const Case cases[] = {
      {ScanBracketedTime, "[01:02:03]", 3723000},
      {ScanBracketedTime, "[01:02:03", 3723000},  // closing bracket not required
      {ScanBracketedTime, "[1:2:3]", 3723000},
      {ScanBracketedTime, "[01:02]", -1},
      {ScanBracketedTime, nullptr, -1},
      {ScanCommaMillisTime, "00:00:01,500", 1500},
      {ScanCommaMillisTime, " 1:2:3,4", 3723004},
      {ScanCommaMillisTime, "00:00:01.500", -1},
      {ScanCommaMillisTime, "100:00:01,500", -1},  // two-digit hours stop at the third digit
      {ScanCommaMillisTime, "00:00:01,1234", 1123},
      {ScanDotCentisTime, "0:01:02.50", 62500},
      {ScanColonCentisTime, "00:01:02:05", 62050},
      {ScanPlainTime, "100:0:1", 360001000},
      {ScanPlainTime, "1:x:1", -1},
      {ScanColonMillisTime, "00:00:10:250", 10250},
      {ScanPlainTime, "99999999999:0:0", -3600000},  // saturates, then wraps: defined, not UB
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.scan(c.text), c.ms) << (c.text ? c.text : "null");
  }
}

TEST(ScanFrameNumber, ReadsBracedNumbers) {
  const char* text = "{12}{}x";
  const char* cursor = text;
  EXPECT_EQ(ScanFrameNumber(cursor), 12);
  EXPECT_EQ(ScanFrameNumber(cursor), 0);
  EXPECT_EQ(*cursor, 'x');
  EXPECT_EQ(ScanFrameNumber(cursor), -1);
  for (const char* bad : {"{12a}", "{12", "12}", "{-1}", ""}) {
    const char* c = bad;
    EXPECT_EQ(ScanFrameNumber(c), -1) << bad;
    EXPECT_EQ(c, bad);
  }
}

TEST(LanguageNameFromCode, MapsCodesOfTheTable) {
  EXPECT_STREQ(LanguageNameFromCode("EN"), "English");
  EXPECT_STREQ(LanguageNameFromCode("sv"), "Swedish");
  EXPECT_STREQ(LanguageNameFromCode("xx"), "xx");
  EXPECT_EQ(LanguageNameFromCode(nullptr), nullptr);
}

}  // namespace
}  // namespace korvalin
