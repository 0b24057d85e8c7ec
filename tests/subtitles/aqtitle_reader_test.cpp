#include "subtitles/readers/aqtitle_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"
#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::TempFolder;

TEST(AqTitleReader, ReadsAndRejectsAsTheFormatSays) {
  const struct {
    const char* name;
    std::string bytes;
    int result;
    bool framesPending;
    std::string entries;
  } cases[] = {
      {"rate from frame 0", "-->> 0\n25\n\n-->> 250\nHello\n\n-->> 300\n\n\n", 0, false,
       "10000-11999:Hello|"},
      {"two lines kept", "-->> 0\n25\n\n-->> 25\n a \n b \n", 0, false, "1000-2147483647:a / b|"},
      {"frames wait for the video", "-->> 10\nx\n\n-->> 20\ny\n\n", 0, true,
       "10-19:x|20-2147483647:y|"},
      {"frame 0 after an entry", "-->> 5\nx\n\n-->> 0\n25\n\n", 0, true, "0-4:25|5-2147483647:x|"},
      {"unreadable rate", "-->> 0\nfast\n\n-->> 7\nx\n\n", 0, true, "7-2147483647:x|"},
      {"empty", "\n\n", 1, true, ""},
      {"not a marker", "-->>5\nx\n\n", -1, true, ""},
      {"no frame number", "-->> x\na\n\n", -1, true, ""},
      {"ends inside the text", "-->> 5\nx\n", -1, true, ""},
      {"third text line", "-->> 5\nx\ny\nz\n", -1, true, ""},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write("case.aqt", c.bytes);
    EXPECT_EQ(ReadAqTitle(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(track.framesPending, c.framesPending) << c.name;
    if (c.result == 0) {
      EXPECT_EQ(DescribeEntries(track), c.entries) << c.name;
    }
    EXPECT_EQ(track.formatName, "AqTitle") << c.name;
  }
}

TEST(AqTitleReader, LoaderReadsAqtFiles) {
  const TempFolder folder;
  const std::string path = folder.Write("a.aqt", "-->> 1\nx\n\n");
  SubtitleTrack track;
  EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), 0);
  EXPECT_EQ(track.formatName, "AqTitle");
}

}  // namespace
}  // namespace korvalin
