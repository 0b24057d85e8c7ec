#include "subtitles/readers/subrip_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::TempFolder;

// Entries as "start-stop:text|" with line feeds shown as "/".
std::string Describe(const SubtitleTrack& track) {
  std::string out;
  for (const SubtitleEntry* e : track.entries) {
    std::string text = e->text.c_str();
    for (char& c : text) c = c == '\n' ? '/' : c;
    out += std::to_string(e->start) + "-" + std::to_string(e->stop) + ":" + text + "|";
  }
  return out;
}

TEST(SubRipReader, ReadsAndRejectsAsTheGrammarSays) {
  struct Case {
    const char* name;
    std::string bytes;
    int result;
    std::string entries;
  };
  const Case cases[] = {
      {"two blocks", "1\n00:00:01,000 --> 00:00:02,500\nHello\nworld\n\n2\n00:00:03,000 --> "
                     "00:00:04,000 X1:0\n<i>Hi</i>\n",
       0, "1000-2500:Hello/world|3000-4000:<i>Hi</i>|"},
      {"no final line feed", "1\n00:00:01,000 --> 00:00:02,000\nlast", 0, "1000-2000:last|"},
      {"empty text kept", "\n\n1\n00:00:01,000 --> 00:00:02,000\n\n\n", 0, "1000-2000:|"},
      {"stop before start", "1\n00:00:05,000 --> 00:00:02,000\nx\n", 0, "5000-2000:x|"},
      {"sorted by start", "2\n00:00:05,000 --> 00:00:06,000\nb\n\n1\n00:00:01,000 --> "
                          "00:00:02,000\na\n",
       0, "1000-2000:a|5000-6000:b|"},
      {"any counters", "-7\n00:00:01,000 --> 00:00:02,000\na\n\n-7 x\n00:00:03,000 --> "
                       "00:00:04,000\nb\n",
       0, "1000-2000:a|3000-4000:b|"},
      {"spaces are text", "1\n00:00:01,000 --> 00:00:02,000\na\n  \nb\n", 0, "1000-2000:a/  /b|"},
      {"empty", "", 1, ""},
      {"only blank lines", "\n\n\n", 1, ""},
      {"counter zero", "0\n00:00:01,000 --> 00:00:02,000\na\n", -1, ""},
      {"not a number", "x\n00:00:01,000 --> 00:00:02,000\na\n", -1, ""},
      {"spaces as counter", "1\n00:00:01,000 --> 00:00:02,000\na\n\n  \n", -1, "1000-2000:a|"},
      {"end after counter", "1\n", -1, ""},
      {"arrow without spaces", "1\n00:00:01,000-->00:00:02,000\na\n", -1, ""},
      {"full stop before millis", "1\n00:00:01.000 --> 00:00:02,000\na\n", -1, ""},
      {"three-digit hours", "1\n100:00:01,000 --> 100:00:02,000\na\n", -1, ""},
      {"MicroDVD", "{1}{25}Hello\n", -1, ""},
  };
  const TempFolder folder;
  for (const Case& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write("case.srt", c.bytes);
    EXPECT_EQ(ReadSubRip(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(Describe(track), c.entries) << c.name;
    EXPECT_EQ(track.formatName, "SubRip") << c.name;
    EXPECT_EQ(track.fileName, path.c_str()) << c.name;
  }
}

TEST(SubRipReader, ReadsUtf8WithByteOrderMarkAndCrLf) {
  const TempFolder folder;
  const std::string path = folder.Write(
      "bom.srt",
      "\xEF\xBB\xBF" "1\r\n00:00:01,000 --> 00:00:02,000\r\nca\xC3\xA7\x61\r\nx\ry\r\n\r\n");
  SubtitleTrack track;
  ASSERT_EQ(ReadSubRip(track, path.c_str()), 0);
  EXPECT_EQ(Describe(track), "1000-2000:ca\xC3\xA7" "a/x\ry|");
}

TEST(SubRipReader, UnopenableFileGivesMinusOneAndAResetTrack) {
  SubtitleTrack track;
  track.AddEntry(std::make_unique<SubtitleEntry>(0, 1, "old"));
  EXPECT_EQ(ReadSubRip(track, "/nonexistent/korvalin.srt"), -1);
  EXPECT_TRUE(track.entries.IsEmpty());
  EXPECT_EQ(ReadSubRip(track, nullptr), -1);
}

TEST(SubRipReader, LongLinesArriveInPieces) {
  const TempFolder folder;
  const std::string path = folder.Write(
      "long.srt", "1\n00:00:01,000 --> 00:00:02,000\n" + std::string(1500, 'x') + "\n");
  SubtitleTrack track;
  ASSERT_EQ(ReadSubRip(track, path.c_str()), 0);
  EXPECT_EQ(track.entries[0]->text.Length(), 1501u);  // 1023 + line feed + 477
  EXPECT_EQ(track.entries[0]->text.c_str()[1023], '\n');
}

}  // namespace
}  // namespace korvalin
