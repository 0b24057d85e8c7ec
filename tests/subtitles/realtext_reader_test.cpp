#include "subtitles/readers/realtext_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"
#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::TempFolder;

TEST(RealTextReader, TimeTagsShowTheTextSoFar) {
  const struct {
    const char* name;
    std::string bytes;
    int result;
    std::string entries;
  } cases[] = {
      {"text grows", "<time begin=1>Hello\n<time begin=4>World", 0,
       "1000-3999:Hello|4000-2147483647:Hello World|"},
      {"clear starts anew", "<time begin=1>Hello\n<time begin=4><clear/>World", 0,
       "1000-3999:Hello|4000-2147483647:World|"},
      {"no begin, no entry", "<time begin=1>a <time end=3>b <time begin=5>c", 0,
       "1000-4999:a|5000-2147483647:a b c|"},
      {"begin and end", "<Time Begin=\"0:01\" End=\"0:02.5\"/>x<br/>y", 0, "1000-2500:x/y|"},
      {"text before the first time", "<window>intro<time begin=2><clear/>x</window>", 0,
       "2000-2147483647:x|"},
      {"byte order mark", "\xEF\xBB\xBF<time begin=2>&auml;", 0, "2000-2147483647:\xE4|"},
      {"no time tags", "<window>static text</window>", 1, ""},
      {"only empty text", "<time begin=1><time begin=2>", 1, ""},
      {"empty file", "", 1, ""},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write("case.rt", c.bytes);
    EXPECT_EQ(ReadRealText(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(DescribeEntries(track), c.entries) << c.name;
    EXPECT_EQ(track.formatName, "RealText") << c.name;
  }
  SubtitleTrack track;
  EXPECT_EQ(ReadRealText(track, (folder.path() / "missing.rt").c_str()), -1);
}

TEST(RealTextReader, TextThatNeverClearsKeepsItsLastLines) {
  std::string bytes;
  for (int line = 0; line < 20000; ++line) {
    bytes += "<time begin=" + std::to_string(line) + ">line " + std::to_string(line) + "<br/>";
  }
  const TempFolder folder;
  SubtitleTrack track;
  ASSERT_EQ(ReadRealText(track, folder.Write("long.rt", bytes).c_str()), 0);
  ASSERT_EQ(track.entries.Count(), 20000u);
  const std::string last = track.entries[19999]->text.c_str();
  EXPECT_LE(last.size(), 1024u);
  EXPECT_EQ(last.rfind("line ", 0), 0u);  // whole lines only
  EXPECT_EQ(last.substr(last.size() - 10), "line 19999");
}

TEST(RealTextReader, TimeValuesReadAsMinutesAndSeconds) {
  const struct {
    const char* value;
    int32_t ms;
  } cases[] = {
      {"1:02:03.5", 3723500},
      {"83.25", 83250},
      {"2:05", 125000},
      {"10>", 10000},
      {"", -1},
      {"x", -1},
      {":5", -1},
      {"1:", -1},
      {"nan", -1},
      {"99999999999:0", 2147483647},
  };
  for (const auto& c : cases) EXPECT_EQ(RealTextTimeToMs(c.value), c.ms) << c.value;
  EXPECT_EQ(RealTextTimeToMs(nullptr), -1);
}

TEST(RealTextReader, LoaderReadsRtFiles) {
  const TempFolder folder;
  const std::string path = folder.Write("a.b.rt", "<time begin=1>x");
  SubtitleTrack track;
  EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), 0);
  EXPECT_EQ(track.formatName, "RealText");
}

}  // namespace
}  // namespace korvalin
