#include "subtitles/readers/ssa_reader.h"

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

constexpr const char* kV4Dialogue =
    "Dialogue: Marked=0,0:00:01.00,0:00:04.00,Default,,0000,0000,0000,,Hello\\NWorld\n";

TEST(SsaReader, ReadsDialogueEvents) {
  const ReaderCase cases[] = {
      {"version 4", std::string("[Script Info]\nScriptType: v4.00\n[Events]\n") + kV4Dialogue, 0,
       "1000-4000:Hello/World|"},
      {"no script type: a leading comma goes", kV4Dialogue, 0, "1000-4000:Hello/World|"},
      {"version 4 plus", std::string("scripttype: V4.00+\n") + kV4Dialogue, 0,
       "1000-4000:Hello/World|"},
      {"version 3", "ScriptType: v3.00\nDialogue: Marked=0,0:00:01.50,0:00:02.00,a,b,0,0,0,x\n", 0,
       "1500-2000:x|"},
      {"timer halves times", std::string("Timer: 50.0000\n") + kV4Dialogue, 0,
       "500-2000:Hello/World|"},
      {"timer 0 is ignored", std::string("Timer: 0\n") + kV4Dialogue, 0, "1000-4000:Hello/World|"},
      {"timer with a decimal comma", "Timer: 100,0000\n" + std::string(kV4Dialogue), 0,
       "1000-4000:Hello/World|"},
      {"small n breaks too, codes go, commas stay",
       "Dialogue: 0,0:00:01.00,0:00:02.00,a,b,0,0,0,{\\i1}a, b\\nc{\\i0}, d\n", 0,
       "1000-2000:a, b/c, d|"},
      {"sorted",
       "dialogue: 0,0:00:09.00,0:00:10.00,a,b,0,0,0,late\n"
       "DIALOGUE: 0,0:00:01.00,0:00:02.00,a,b,0,0,0,early\n",
       0, "1000-2000:early|9000-10000:late|"},
      {"format and other lines ignored",
       "Format: Marked, Start, End, Text\nComment: 0,x\nStyle: a,b\n", 1, ""},
      {"empty", "", 1, ""},
      {"version 2", std::string("ScriptType: v2.00\n") + kV4Dialogue, -1, ""},
      {"too few commas", "Dialogue: 0,0:00:01.00,0:00:02.00,a,b\n", -1, ""},
      {"start does not scan", "Dialogue: 0,soon,0:00:02.00,a,b,0,0,0,x\n", -1, ""},
  };
  ExpectReaderCases(ReadSubStationAlpha, "Sub Station Alpha", "case.ssa", cases);
}

// A 3 x 2 bitmap at 24 bits per pixel, bottom-up, rows padded to four bytes.
std::string TinyBitmap() {
  auto le32 = [](uint32_t v) {
    return std::string{char(v), char(v >> 8), char(v >> 16), char(v >> 24)};
  };
  const std::string row = std::string(9, '\xFF') + std::string(3, '\0');
  return "BM" + le32(54 + 24) + le32(0) + le32(54) + le32(40) + le32(3) + le32(2) +
         std::string{1, 0, 24, 0} + le32(0) + le32(24) + le32(0) + le32(0) + le32(0) + le32(0) +
         row + row;
}

TEST(SsaReader, PictureEventsLoadTheNamedBitmapOrStayEmpty) {
  const TempFolder folder;
  const std::string bitmap = folder.Write("Pic.BMP", TinyBitmap());
  const std::string missing = (folder.path() / "none.bmp").string();
  const std::string lowerCase = (folder.path() / "pic.bmp").string();
  const std::string path =
      folder.Write("p.ssa", "Picture: 0,0:00:01.00,0:00:02.00,a,b,0,0,0," + bitmap + "\n" +
                                "Picture: 0,0:00:03.00,0:00:04.00,a,b,0,0,0," + missing + "\n" +
                                "Picture: 0,0:00:05.00,0:00:06.00,a,b,0,0,0," + lowerCase + "\n");
  SubtitleTrack track;
  ASSERT_EQ(ReadSubStationAlpha(track, path.c_str()), 0);
  EXPECT_EQ(DescribeEntries(track),
            "1000-2000:[picture 3x2]|3000-4000:[picture 0x0]|5000-6000:[picture 3x2]|");
}

TEST(SsaReader, UnopenableFileGivesMinusOne) {
  SubtitleTrack track;
  EXPECT_EQ(ReadSubStationAlpha(track, "/nonexistent/a.ssa"), -1);
}

}  // namespace
}  // namespace korvalin
