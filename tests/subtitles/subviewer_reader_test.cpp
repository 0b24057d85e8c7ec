#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"
#include "subtitles/readers/subviewer_v1_reader.h"
#include "subtitles/readers/subviewer_v2_reader.h"

namespace korvalin {
namespace {

using testing::ExpectReaderCases;
using testing::ReaderCase;

constexpr int32_t kEnd = OpenEnd;

TEST(SubViewer2Reader, ReadsTimeTextSeparatorTriplesAfterTheHeader) {
  const std::string header = "[INFORMATION]\n[TITLE]x\n[END INFORMATION]\n[SUBTITLE]\n";
  const ReaderCase cases[] = {
      {"one subtitle", header + "00:00:01.00,00:00:04.00\nHello\n\n", 0, "1000-4000:Hello|"},
      {"delay tag", "[DELAY]50\n" + header + "00:00:01.00,00:00:04.00\nHi\n\n", 0, "1000-4000:Hi|",
       500},
      {"delay tag in lower case", "[delay] 7\n00:00:01.00,00:00:02.00\nHi\n\n", 0, "1000-2000:Hi|",
       70},
      {"two breaks, three lines", "00:00:01.00,00:00:02.00\na[br]b[br]c\n\n", 0,
       "1000-2000:a/b/c|"},
      {"break tag is case-sensitive", "00:00:01.00,00:00:02.00\na[BR]b\n\n", 0,
       "1000-2000:a[BR]b|"},
      {"any separator line, sorted",
       "00:00:05.00,00:00:06.00\nb\nx\n00:00:01.00,00:00:02.00\na\n\n", 0,
       "1000-2000:a|5000-6000:b|"},
      {"last subtitle without separator dropped",
       "00:00:01.00,00:00:02.00\na\n\n00:00:03.00,00:00:04.00\nb\n", 0, "1000-2000:a|"},
      {"only a header", header, 1, ""},
      {"blank line after the header", header + "\n00:00:01.00,00:00:04.00\nHello\n\n", -1, ""},
      {"time line without comma", "00:00:01.00 00:00:04.00\nHello\n\n", -1, ""},
      {"stop does not scan", "00:00:01.00,later\nHello\n\n", -1, ""},
      {"end right after a time line", "00:00:01.00,00:00:04.00\n", -1, ""},
      {"MicroDVD", "{1}{25}Hello, world\n", -1, ""},
      {"SubViewer 1.0", "[00:00:01]\nHello\n", -1, ""},
  };
  ExpectReaderCases(ReadSubViewer2, "SubViewer 2.0", "case.sub", cases);
}

TEST(SubViewer1Reader, ReadsTimeAndTextPairsEndingAtTheNextTime) {
  const std::string kEndText = std::to_string(kEnd);
  const ReaderCase cases[] = {
      {"empty text clears the screen", "[00:00:01]\nHello\n[00:00:05]\n\n", 0, "1000-4999:Hello|"},
      {"last lasts to the end", "[00:00:01]\na|b\n[00:00:03]\nc\n", 0,
       "1000-2999:a/b|3000-" + kEndText + ":c|"},
      {"delay pair", "[DELAY]\n2\n[00:00:01]\nx\n", 0, "1000-" + kEndText + ":x|", 2000},
      {"header tag pairs pass", "[TITLE]\nFilm\n[AUTHOR]\nMe\n[00:00:02]\nx\n", 0,
       "2000-" + kEndText + ":x|"},
      {"missing closing bracket, one-digit fields", "[1:2:3\nx\n", 0,
       "3723000-" + kEndText + ":x|"},
      {"unpaired last line dropped", "[00:00:01]\nx\n[00:00:09]\n", 0, "1000-" + kEndText + ":x|"},
      {"sorted", "[00:00:09]\nb\n[00:00:01]\na\n", 0, "1000-8999:a|9000-" + kEndText + ":b|"},
      {"only tag pairs", "[TITLE]\nFilm\n[AUTHOR]\nMe\n", 1, ""},
      {"empty file", "", 1, ""},
  };
  ExpectReaderCases(ReadSubViewer1, "SubViewer 1.0", "case.sub", cases);
}

TEST(SubViewerReaders, UnopenableFileGivesMinusOne) {
  SubtitleTrack track;
  EXPECT_EQ(ReadSubViewer1(track, "/nonexistent/a.sub"), -1);
  EXPECT_EQ(ReadSubViewer2(track, "/nonexistent/a.sub"), -1);
  EXPECT_EQ(ReadSubViewer2(track, nullptr), -1);
  EXPECT_TRUE(track.formatName.IsEmpty());
}

}  // namespace
}  // namespace korvalin
