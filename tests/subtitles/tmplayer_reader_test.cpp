#include "subtitles/readers/tmplayer_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"
#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::TempFolder;

TEST(TmPlayerReader, ReadsAndRejectsAsTheFormatSays) {
  const struct {
    const char* name;
    std::string bytes;
    int result;
    std::string entries;
  } cases[] = {
      {"colon and bars", "00:01:02:Hello|World\n", 0, "62000-66000:Hello/World|"},
      {"equals first", "0:01:02=Time: 5\n", 0, "62000-66000:Time: 5|"},
      {"ends before the next", "00:00:01:a\n00:00:03:b\n", 0, "1000-2999:a|3000-7000:b|"},
      {"at most four seconds", "00:00:01:a\n00:00:09:b\n", 0, "1000-5000:a|9000-13000:b|"},
      {"empty text clears", "00:00:01:a\n00:00:02:\n", 0, "1000-1999:a|"},
      {"sorted, blank lines skipped", "\n00:00:05:b\n\n00:00:01:a", 0, "1000-4999:a|5000-9000:b|"},
      {"empty file", "", 1, ""},
      {"only clears", "00:00:01:\n", 1, ""},
      {"no separator", "00:00:01 text\n", -1, ""},
      {"time too long", "-00:00:07:x\n", -1, ""},
      {"line-numbered form", "00:00:10,1=x\n", -1, ""},
      {"time does not scan", "aa:bb:cc:x\n", -1, ""},
      {"SubRip", "1\n00:00:01,000 --> 00:00:02,000\nx\n", -1, ""},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write("case.txt", c.bytes);
    EXPECT_EQ(ReadTmPlayer(track, path.c_str()), c.result) << c.name;
    if (c.result == 0) {
      EXPECT_EQ(DescribeEntries(track), c.entries) << c.name;
    }
    EXPECT_EQ(track.formatName, "TMPlayer") << c.name;
  }
}

TEST(TmPlayerReader, TxtFileIsReadAfterMicroDvdRefusesIt) {
  const TempFolder folder;
  const std::string path = folder.Write("movie.TXT",
                                        "\xEF\xBB\xBF"
                                        "00:00:01:Hi\r\n");
  SubtitleTrack track;
  ASSERT_EQ(LoadSubtitleFile(track, path.c_str()), 0);
  EXPECT_EQ(track.formatName, "TMPlayer");
  EXPECT_EQ(DescribeEntries(track), "1000-5000:Hi|");
}

}  // namespace
}  // namespace korvalin
