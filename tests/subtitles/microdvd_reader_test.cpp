#include "subtitles/readers/microdvd_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::ExpectReaderCases;
using testing::ReaderCase;
using testing::TempFolder;

// Times come out in ms where the file gave a rate, as frame numbers otherwise.
TEST(MicroDvdReader, ReadsFrameLines) {
  const std::string kEnd = std::to_string(OpenEnd);
  const ReaderCase cases[] = {
      {"rate line, then frames in ms", "{1}{1}23.976\n{2398}{2500}Hi\n", 0, "100016-104270:Hi|"},
      {"rate line that is no number", "{1}{1}abc\n{10}{20}Hi\n", 0, "10-20:Hi|"},
      {"{0}{0} after a subtitle is text", "{10}{20}a\n{0}{0}25\n", 0, "0-9:25|10-20:a|"},
      {"second rate line is text", "{1}{1}25\n{0}{1}30\n{50}{75}x\n", 0, "0-40:30|2000-3000:x|"},
      {"codes dropped, bars split", "{1}{2}{c:$0000FF}Red|{y:i}line\n", 0, "1-2:Red/line|"},
      {"unclosed brace, stray brace", "{1}{2}a}b{c\n", 0, "1-2:ab|"},
      {"empty stop in frames", "{10}{}a\n{20}{30}b\n", 0, "10-19:a|20-30:b|"},
      {"empty stop in ms", "{1}{1}25\n{25}{}a\n{50}{75}b\n", 0, "1000-1999:a|2000-3000:b|"},
      {"last open end", "{25}{}a\n", 0, "25-" + kEnd + ":a|"},
      {"empty text kept", "{10}{20}\n", 0, "10-20:|"},
      {"default and empty lines skipped", "{default}{x}\n\n{1}{2}a\n", 0, "1-2:a|"},
      {"only a rate line", "{1}{1}25\n", 1, ""},
      {"empty", "", 1, ""},
      {"one foreign line rejects", "{1}{2}a\n1\n", -1, "1-2:a|"},
      {"negative frame", "{-5}{2}a\n", -1, ""},
      {"letter in the frame", "{12a}{20}a\n", -1, ""},
      {"SubRip", "1\n00:00:01,000 --> 00:00:02,000\nx\n", -1, ""},
  };
  ExpectReaderCases(ReadMicroDvd, "MicroDVD", "case.txt", cases);
}

TEST(MicroDvdReader, FramesWaitForTheVideoRateWithoutARateLine) {
  const TempFolder folder;
  SubtitleTrack track;
  ASSERT_EQ(ReadMicroDvd(track, folder.Write("rated.sub", "{1}{1}25\n{25}{50}a\n").c_str()), 0);
  EXPECT_FALSE(track.framesPending);
  ASSERT_EQ(ReadMicroDvd(track, folder.Write("bad.sub", "{1}{1}abc\n{25}{50}a\n").c_str()), 0);
  EXPECT_TRUE(track.framesPending);

  ASSERT_EQ(ReadMicroDvd(track, folder.Write("a.sub", "{25}{50}a\n{100}{}b\n").c_str()), 0);
  EXPECT_EQ(track.UpdateForFrame(1000, 1040, 720), -1);  // nothing while still frames
  track.ConvertFramesToMs(25.0f);
  EXPECT_FALSE(track.framesPending);
  EXPECT_EQ(DescribeEntries(track), "1000-2000:a|4000-" + std::to_string(OpenEnd) + ":b|");
}

TEST(MicroDvdReader, UnopenableFileGivesMinusOne) {
  SubtitleTrack track;
  EXPECT_EQ(ReadMicroDvd(track, "/nonexistent/a.sub"), -1);
  EXPECT_FALSE(track.framesPending);
}

}  // namespace
}  // namespace korvalin
