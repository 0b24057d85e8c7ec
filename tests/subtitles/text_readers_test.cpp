#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/std_file.h"
#include "loader_detection_entries.h"
#include "subtitles/line_reader.h"
#include "subtitles/readers/aqtitle_reader.h"
#include "subtitles/readers/dvdsubtitle_reader.h"
#include "subtitles/readers/jacosub_reader.h"
#include "subtitles/readers/microdvd_ini_reader.h"
#include "subtitles/readers/microdvd_reader.h"
#include "subtitles/readers/realtext_reader.h"
#include "subtitles/readers/sami_reader.h"
#include "subtitles/readers/ssa_reader.h"
#include "subtitles/readers/subrip_reader.h"
#include "subtitles/readers/subviewer_v1_reader.h"
#include "subtitles/readers/subviewer_v2_reader.h"
#include "subtitles/readers/tmplayer_reader.h"
#include "subtitles/time_scanners.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::StreamNames;
using testing::ExpectReaderCases;
using testing::ReaderCase;
using testing::TempFolder;

// A white w x h picture as an uncompressed 24-bit BMP file, rows padded to four bytes.
std::string WhiteBitmap(uint32_t w, uint32_t h) {
  auto le32 = [](uint32_t v) {
    return std::string{char(v), char(v >> 8), char(v >> 16), char(v >> 24)};
  };
  const std::string row = std::string(3 * w, '\xFF') + std::string((4 - 3 * w % 4) % 4, '\0');
  std::string bmp = "BM" + le32(54 + h * row.size()) + le32(0) + le32(54) + le32(40) + le32(w) +
                    le32(h) + std::string{1, 0, 24, 0} + le32(0) + le32(h * row.size()) +
                    le32(0) + le32(0) + le32(0) + le32(0);
  for (uint32_t y = 0; y < h; ++y) bmp += row;
  return bmp;
}

TEST(MicroDvdReader, ReadsFrameLines) {
  const ReaderCase cases[] = {
      {"rate line, then frames in ms", "{1}{1}23.976\n{2398}{2500}Hi\n", 0, "100016-104270:Hi|"},
      {"rate line that is no number", "{1}{1}abc\n{10}{20}Hi\n", 0, "frames 10-20:Hi|"},
      {"{0}{0} after a subtitle is text", "{10}{20}a\n{0}{0}25\n", 0, "frames 0-9:25|10-20:a|"},
      {"second rate line is text", "{1}{1}25\n{0}{1}30\n{50}{75}x\n", 0, "0-40:30|2000-3000:x|"},
      {"codes dropped, bars split", "{1}{2}{c:$0000FF}Red|{y:i}line\n", 0, "frames 1-2:Red/line|"},
      {"unclosed brace, stray brace", "{1}{2}a}b{c\n", 0, "frames 1-2:ab|"},
      {"empty stop in frames", "{10}{}a\n{20}{30}b\n", 0, "frames 10-19:a|20-30:b|"},
      {"empty stop in ms", "{1}{1}25\n{25}{}a\n{50}{75}b\n", 0, "1000-1999:a|2000-3000:b|"},
      {"last open end", "{25}{}a\n", 0, "frames 25-2147483647:a|"},
      {"empty text kept, default line skipped", "{default}{x}\n\n{10}{20}\n", 0, "frames 10-20:|"},
      {"only a rate line", "{1}{1}25\n", 1, ""},
      {"empty", "", 1, ""},
      {"one foreign line rejects", "{1}{2}a\n1\n", -1, "1-2:a|"},
      {"negative frame", "{-5}{2}a\n", -1, ""},
      {"letter in the frame", "{12a}{20}a\n", -1, ""},
      {"SubRip", "1\n00:00:01,000 --> 00:00:02,000\nx\n", -1, ""},
  };
  ExpectReaderCases(ReadMicroDvd, "MicroDVD", "case.txt", cases);
}

TEST(SubRipReader, ReadsAndRejectsBlocks) {
  const ReaderCase cases[] = {
      {"two blocks, coordinates ignored",
       "1\n00:00:01,000 --> 00:00:02,500\nHello\nworld\n\n2\n00:00:03,000 --> 00:00:04,000 X1:0\n"
       "<i>Hi</i>\n",
       0, "1000-2500:Hello/world|3000-4000:<i>Hi</i>|"},
      {"no final line feed", "1\n00:00:01,000 --> 00:00:02,000\nlast", 0, "1000-2000:last|"},
      {"empty text kept", "\n\n1\n00:00:01,000 --> 00:00:02,000\n\n\n", 0, "1000-2000:|"},
      {"stop before start", "1\n00:00:05,000 --> 00:00:02,000\nx\n", 0, "5000-2000:x|"},
      {"sorted, any counters",
       "-7\n00:00:05,000 --> 00:00:06,000\nb\n\n-7 x\n00:00:01,000 --> 00:00:02,000\na\n", 0,
       "1000-2000:a|5000-6000:b|"},
      {"spaces are text", "1\n00:00:01,000 --> 00:00:02,000\na\n  \nb\n", 0, "1000-2000:a/  /b|"},
      {"empty", "", 1, ""},
      {"counter zero", "0\n00:00:01,000 --> 00:00:02,000\na\n", -1, ""},
      {"not a number", "x\n00:00:01,000 --> 00:00:02,000\na\n", -1, ""},
      {"spaces as counter", "1\n00:00:01,000 --> 00:00:02,000\na\n\n  \n", -1, "1000-2000:a|"},
      {"end after counter", "1\n", -1, ""},
      {"arrow without spaces", "1\n00:00:01,000-->00:00:02,000\na\n", -1, ""},
      {"full stop before millis", "1\n00:00:01.000 --> 00:00:02,000\na\n", -1, ""},
      {"three-digit hours", "1\n100:00:01,000 --> 100:00:02,000\na\n", -1, ""},
      {"MicroDVD", "{1}{25}Hello\n", -1, ""},
      {"byte order mark and CRLF",
       "\xEF\xBB\xBF" "1\r\n00:00:01,000 --> 00:00:02,000\r\nca\xC3\xA7" "a\r\nx\ry\r\n\r\n", 0,
       "1000-2000:ca\xC3\xA7" "a/x\ry|"},
      // Lines longer than the 1024-byte buffer arrive in pieces joined by a line feed.
      {"long line", "1\n00:00:01,000 --> 00:00:02,000\n" + std::string(1500, 'x') + "\n", 0,
       "1000-2000:" + std::string(1023, 'x') + "/" + std::string(477, 'x') + "|"},
  };
  ExpectReaderCases(ReadSubRip, "SubRip", "case.srt", cases);
}

TEST(SubViewer2Reader, ReadsTimeTextSeparatorTriplesAfterTheHeader) {
  const std::string header = "[INFORMATION]\n[TITLE]x\n[END INFORMATION]\n[SUBTITLE]\n";
  const ReaderCase cases[] = {
      {"one subtitle", header + "00:00:01.00,00:00:04.00\nHello\n\n", 0, "1000-4000:Hello|"},
      {"delay tag", "[DELAY]50\n" + header + "00:00:01.00,00:00:04.00\nHi\n\n", 0, "1000-4000:Hi|",
       500},
      {"delay tag in lower case", "[delay] 7\n00:00:01.00,00:00:02.00\nHi\n\n", 0, "1000-2000:Hi|",
       70},
      {"breaks are case-sensitive", "00:00:01.00,00:00:02.00\na[br]b[BR]c\n\n", 0,
       "1000-2000:a/b[BR]c|"},
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
  const ReaderCase cases[] = {
      {"empty text clears the screen", "[00:00:01]\nHello\n[00:00:05]\n\n", 0, "1000-4999:Hello|"},
      {"last lasts to the end", "[00:00:01]\na|b\n[00:00:03]\nc\n", 0,
       "1000-2999:a/b|3000-2147483647:c|"},
      {"delay pair", "[DELAY]\n2\n[00:00:01]\nx\n", 0, "1000-2147483647:x|", 2000},
      {"header tag pairs pass", "[TITLE]\nFilm\n[AUTHOR]\nMe\n[00:00:02]\nx\n", 0,
       "2000-2147483647:x|"},
      {"no closing bracket, one-digit fields", "[1:2:3\nx\n", 0, "3723000-2147483647:x|"},
      {"unpaired last line dropped", "[00:00:01]\nx\n[00:00:09]\n", 0, "1000-2147483647:x|"},
      {"sorted", "[00:00:09]\nb\n[00:00:01]\na\n", 0, "1000-8999:a|9000-2147483647:b|"},
      {"only tag pairs", "[TITLE]\nFilm\n[AUTHOR]\nMe\n", 1, ""},
      {"empty file", "", 1, ""},
  };
  ExpectReaderCases(ReadSubViewer1, "SubViewer 1.0", "case.sub", cases);
}

TEST(SsaReader, ReadsDialogueEvents) {
  const std::string v4 =
      "Dialogue: Marked=0,0:00:01.00,0:00:04.00,Default,,0000,0000,0000,,Hello\\NWorld\n";
  const ReaderCase cases[] = {
      {"version 4", "[Script Info]\nScriptType: v4.00\n[Events]\n" + v4, 0,
       "1000-4000:Hello/World|"},
      {"no script type: a leading comma goes", v4, 0, "1000-4000:Hello/World|"},
      {"version 4 plus", "scripttype: V4.00+\n" + v4, 0, "1000-4000:Hello/World|"},
      {"version 3", "ScriptType: v3.00\nDialogue: Marked=0,0:00:01.50,0:00:02.00,a,b,0,0,0,x\n", 0,
       "1500-2000:x|"},
      {"timer halves times", "Timer: 50.0000\n" + v4, 0, "500-2000:Hello/World|"},
      {"timer 0 is ignored", "Timer: 0\n" + v4, 0, "1000-4000:Hello/World|"},
      {"timer with a decimal comma", "Timer: 100,0000\n" + v4, 0, "1000-4000:Hello/World|"},
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
      {"version 2", "ScriptType: v2.00\n" + v4, -1, ""},
      {"too few commas", "Dialogue: 0,0:00:01.00,0:00:02.00,a,b\n", -1, ""},
      {"start does not scan", "Dialogue: 0,soon,0:00:02.00,a,b,0,0,0,x\n", -1, ""},
  };
  ExpectReaderCases(ReadSubStationAlpha, "Sub Station Alpha", "case.ssa", cases);
}

TEST(JacoSubReader, ReadsTimedLinesAndWorksOutTheirCodes) {
  const ReaderCase cases[] = {
      {"line break", "0:00:01.00 0:00:03.50 D Hello\\nWorld\n", 0, "1000-3500:Hello/World|"},
      {"comment", "0:00:01.00 0:00:02.00 D Billy{an actor} said\n", 0, "1000-2000:Billy said|"},
      {"hard space and escaped tilde", "0:00:01.00 0:00:02.00 D a~b\\~c\n", 0, "1000-2000:a b~c|"},
      {"escaped backslash and brace", "0:00:01.00 0:00:02.00 D \\\\ \\{x\n", 0, "1000-2000:\\ {x|"},
      {"colour and font codes with their argument", "0:00:01.00 0:00:02.00 D \\C1a\\Fbb\\C\n", 0,
       "1000-2000:ab|"},
      {"other codes vanish", "0:00:01.00 0:00:02.00 D \\Bbold\\b \\Nx\\\n", 0, "1000-2000:bold x|"},
      {"escapes inside comments are not", "0:00:01.00 0:00:02.00 D a{\\}b\n", 0, "1000-2000:ab|"},
      {"text spaces kept", "0:00:01.00 0:00:02.00 VL3 a  b \n", 0, "1000-2000:a  b |"},
      {"empty text kept, sorted",
       "#TITLE x\n\n0:00:05.00 0:00:06.00 D \n0:00:01.00 0:00:02.00 D a\n", 0,
       "1000-2000:a|5000-6000:|"},
      {"only directives", "#TIMERES 100\n#T 50\n", 1, ""},
      {"two spaces only", "0:00:01.00 0:00:02.00 D\n", -1, ""},
      {"leading space", " 0:00:01.00 0:00:02.00 D x\n", -1, ""},
      {"frame timing", "100 200 D x\n", -1, ""},
      {"prefixed time", "@0:00:01.00 0:00:02.00 D x\n", -1, ""},
  };
  ExpectReaderCases(ReadJacoSub, "JACOsub", "case.js", cases);
}

TEST(TmPlayerReader, ReadsTimedLines) {
  const ReaderCase cases[] = {
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
  ExpectReaderCases(ReadTmPlayer, "TMPlayer", "case.txt", cases);
}

TEST(AqTitleReader, ReadsMarkersAndUpToTwoTextLines) {
  const ReaderCase cases[] = {
      {"rate from frame 0", "-->> 0\n25\n\n-->> 250\nHello\n\n-->> 300\n\n\n", 0,
       "10000-11999:Hello|"},
      {"two lines kept", "-->> 0\n25\n\n-->> 25\n a \n b \n", 0, "1000-2147483647:a / b|"},
      {"frames wait for the video", "-->> 10\nx\n\n-->> 20\ny\n\n", 0,
       "frames 10-19:x|20-2147483647:y|"},
      {"frame 0 after an entry", "-->> 5\nx\n\n-->> 0\n25\n\n", 0,
       "frames 0-4:25|5-2147483647:x|"},
      {"unreadable rate", "-->> 0\nfast\n\n-->> 7\nx\n\n", 0, "frames 7-2147483647:x|"},
      {"empty", "\n\n", 1, ""},
      {"not a marker", "-->>5\nx\n\n", -1, ""},
      {"no frame number", "-->> x\na\n\n", -1, ""},
      {"ends inside the text", "-->> 5\nx\n", -1, ""},
      {"third text line", "-->> 5\nx\ny\nz\n", -1, "5-0:x/y|"},
  };
  ExpectReaderCases(ReadAqTitle, "AqTitle", "case.aqt", cases);
}

TEST(RealTextReader, TimeTagsShowTheTextSoFar) {
  const ReaderCase cases[] = {
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
  ExpectReaderCases(ReadRealText, "RealText", "case.rt", cases);
  const struct {
    const char* value;
    int32_t ms;
  } times[] = {{"1:02:03.5", 3723500}, {"83.25", 83250}, {"2:05", 125000}, {"10>", 10000},
               {"", -1},  {"x", -1},   {":5", -1},     {"1:", -1},        {"nan", -1},
               {"99999999999:0", 2147483647}};
  for (const auto& t : times) EXPECT_EQ(RealTextTimeToMs(t.value), t.ms) << t.value;
  EXPECT_EQ(RealTextTimeToMs(nullptr), -1);
}

TEST(RealTextReader, TextThatNeverClearsKeepsItsLastWholeLines) {
  std::string bytes;
  for (int line = 0; line < 20000; ++line) {
    bytes += "<time begin=" + std::to_string(line) + ">line " + std::to_string(line) + "<br/>";
  }
  const TempFolder folder;
  SubtitleTrack track;
  ASSERT_EQ(ReadRealText(track, folder.Write("long.rt", bytes).c_str()), 0);
  ASSERT_EQ(track.entries.Count(), 20000u);
  const std::string last = track.entries[19999]->text.c_str();
  EXPECT_LE(last.size(), 512u);
  EXPECT_EQ(last.rfind("line ", 0), 0u);
  EXPECT_EQ(last.substr(last.size() - 10), "line 19999");
}

TEST(DvdSubtitleReader, ReadsBlocksAndRejectsBrokenOnes) {
  const ReaderCase cases[] = {
      {"duration", "{T 00:00:30:00 D=300\nHello\nthere\n}", 0, "30000-33000:Hello/there|"},
      {"open ends", "junk {T 00:00:01:10\nA\n} more junk {T 00:00:02:300\nB\n}", 0,
       "1100-2299:A|2300-2147483647:B|"},
      {"head first", "{HEAD\nDISCID=x\nSUBDELAY=50\n}{T 00:00:01:00\nA\n}", 0,
       "1000-2147483647:A|", 500},
      {"skipped blocks", "{}{T no line feed}{X\n}{T 00:00:01:00\nA\n}{T 00:00:09:00\n", 0,
       "1000-2147483647:A|"},
      {"empty text", "{T 00:00:01:00\n \n}", 1, ""},
      {"head after a subtitle", "{T 00:00:01:00\nA\n}{HEAD\nSUBDELAY=5\n}", -1, "1000-0:A|"},
      {"bad start", "{T 00:xx:01:00\nA\n}", -1, ""},
      {"bad duration", "{T 00:00:01:00 D=x\nA\n}", -1, ""},
      {"MicroDVD", "{1}{25}Hello\n", 1, ""},
  };
  ExpectReaderCases(ReadDvdSubtitle, "DVDSubtitle", "case.sub", cases);
}

TEST(PictureEvents, LoadTheNamedBitmapOrStayEmpty) {
  const TempFolder folder;
  folder.Write("movie/pics/One.BMP", WhiteBitmap(2, 1));
  const std::string dvd = folder.Write(
      "movie/a.sub",
      "{T 00:00:01:00 D=100 P=pics\\one.bmp\nignored\n}{T 00:00:05:00 P=missing.bmp\nx\n}");
  SubtitleTrack track;
  ASSERT_EQ(ReadDvdSubtitle(track, dvd.c_str()), 0);
  EXPECT_EQ(DescribeEntries(track), "1000-2000:[picture 2x1]|");  // the missing one is dropped

  const std::string bitmap = folder.Write("Pic.BMP", WhiteBitmap(3, 2));
  const std::string ssa = "Picture: 0,0:00:01.00,0:00:02.00,a,b,0,0,0," + bitmap + "\n" +
                          "Picture: 0,0:00:03.00,0:00:04.00,a,b,0,0,0," +
                          (folder.path() / "none.bmp").string() + "\n" +
                          "Picture: 0,0:00:05.00,0:00:06.00,a,b,0,0,0," +
                          (folder.path() / "pic.bmp").string() + "\n";
  ASSERT_EQ(ReadSubStationAlpha(track, folder.Write("p.ssa", ssa).c_str()), 0);
  EXPECT_EQ(DescribeEntries(track),
            "1000-2000:[picture 3x2]|3000-4000:[picture 0x0]|5000-6000:[picture 3x2]|");
}

TEST(TextReaders, UnopenableFileGivesMinusOneAndAnEmptyTrack) {
  for (auto read : {ReadMicroDvd, ReadSubRip, ReadSubViewer1, ReadSubViewer2, ReadSubStationAlpha,
                    ReadJacoSub, ReadTmPlayer, ReadAqTitle, ReadRealText, ReadDvdSubtitle, ReadSami,
                    ReadMicroDvdIni}) {
    SubtitleTrack track;
    track.AddEntry(std::make_unique<SubtitleEntry>(0, 1, "old"));
    EXPECT_EQ(read(track, "/nonexistent/korvalin.sub"), -1);
    EXPECT_TRUE(track.entries.IsEmpty());
    EXPECT_FALSE(track.framesPending);
    EXPECT_TRUE(track.formatName.IsEmpty());
  }
  SubtitleTrack track;
  EXPECT_EQ(ReadSubRip(track, nullptr), -1);
  EXPECT_EQ(ReadSubViewer2(track, nullptr), -1);
}

constexpr char kTwoLanguages[] =
    "<SAMI><HEAD><STYLE TYPE=\"text/css\"><!--\n"
    "P { font-family: Arial; }\n"
    "/* the languages */\n"
    ".ENUSCC { Name: English; lang: en-US; }\n"
    ".FRFRCC { Name: French; lang: fr-FR; }\n"
    ".UNUSED { Name: Unused; }\n"
    "--></STYLE></HEAD><BODY>\n"
    "<SYNC Start=1000><P Class=ENUSCC>One</P><P Class=FRFRCC>Un</P></SYNC>\n"
    "<SYNC Start=3000><P Class=ENUSCC>Two\n<!-- no French here -->\n"
    "<SYNC Start=5000><P Class=FRFRCC>&nbsp;\n"
    "</BODY></SAMI>\n";

TEST(SamiReader, ReadsThePreferredLanguage) {
  const struct {
    const char* preferred;
    int32_t streamIndex;
    const char* entries;
  } cases[] = {
      {"french", 1, "1000-4999:Un|"},
      {"ENGLISH", 0, "1000-2999:One|3000-2147483647:Two|"},
      {"German", 0, "1000-2999:One|3000-2147483647:Two|"},  // the parser's choice: the first
  };
  const TempFolder folder;
  const std::string path = folder.Write("two.smi", kTwoLanguages);
  for (const auto& c : cases) {
    SubtitleTrack track;
    track.preferredLanguage.Assign(c.preferred);
    ASSERT_EQ(ReadSami(track, path.c_str()), 0) << c.preferred;
    EXPECT_EQ(StreamNames(track), "English|French|") << c.preferred;
    EXPECT_EQ(track.streamIndex, c.streamIndex) << c.preferred;
    EXPECT_EQ(DescribeEntries(track), c.entries) << c.preferred;
    EXPECT_EQ(track.formatName, "SAMI");
  }
}

TEST(SamiReader, ParsesRealWorldMarkup) {
  const struct {
    const char* name;
    std::string bytes;
    int result;
    const char* streams;
    const char* entries;
  } cases[] = {
      {"any letter case, no closing tags",
       "<sami><body><sync start=\"2000\"><p class=\"a\">x<SYNC START = 1000><P CLASS = A>y", 0,
       "a|", "1000-1999:y|2000-2147483647:x|"},
      {"two paragraphs of a stream join",
       "<SAMI><SYNC Start=1><P Class=E ID=Src>Narrator<P Class=E>Hello  <br>\n  there</SAMI>", 0,
       "E|", "1-2147483647:Narrator/Hello/there|"},
      {"a SYNC without paragraphs clears every stream",
       "<SAMI><SYNC Start=0><P Class=A>a<P Class=B>b<SYNC Start=9>&nbsp;<SYNC Start=20>"
       "<P Class=A>c",
       0, "A|B|", "0-8:a|20-2147483647:c|"},
      {"names from Name, then lang, then the class",
       "<SAMI><STYLE>.X {lang: xx;} .Y {Name: 'Why Not';} .Z {color: red}</STYLE>"
       "<SYNC Start=0><P Class=z>z<P Class=y>y<P Class=x>x",
       0, "xx|Why Not|Z|", "0-2147483647:x|"},
      {"a paragraph without class is in every stream", "<SAMI><SYNC Start=0><P Class=A>a<P>all", 0,
       "A|", "0-2147483647:a/all|"},
      {"a SYNC without start is left out",
       "<SAMI><SYNC><P>lost<SYNC Start=x><P>lost<SYNC Start=5><P>kept", 0, "",
       "5-2147483647:kept|"},
      {"comments and an unterminated STYLE",
       "\xEF\xBB\xBF<SAMI><!-- <SYNC Start=1><P>no --><STYLE>.A {Name: Gone;}\n"
       "<SYNC Start=2><P Class=A>yes <!-- hidden -->done",
       0, "A|", "2-2147483647:yes done|"},
      {"references in a UTF-8 file stay UTF-8",
       "<SAMI><SYNC Start=1><P>\xC3\xBC &#8211;&#150;&auml;&#65;&#228", 0, "",
       "1-2147483647:\xC3\xBC \xE2\x80\x93\xE2\x80\x93\xC3\xA4"
       "A\xC3\xA4|"},
      {"references in a code-page file are bytes", "<SAMI><SYNC Start=1><P>\xFC&#228;", 0, "",
       "1-2147483647:\xFC\xE4|"},
      {"only clears", "<SAMI><SYNC Start=1><P>&nbsp;</SAMI>", 1, "", ""},
      {"no SAMI at all", "1\n00:00:01,000 --> 00:00:02,000\nx\n", -1, "", ""},
      {"UTF-16 with its byte order mark",
       std::string("\xFF\xFE<\0S\0Y\0N\0C\0 \0S\0t\0a\0r\0t\0=\0" "7\0>\0\xE9\0", 32), 0, "",
       "7-2147483647:\xC3\xA9|"},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write("case.smi", c.bytes);
    EXPECT_EQ(ReadSami(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(StreamNames(track), c.streams) << c.name;
    EXPECT_EQ(DescribeEntries(track), c.entries) << c.name;
  }
}

TEST(MicroDvdIniReader, LoadsTheNamedFileOfThePreferredLanguage) {
  const testing::TempFolder folder;
  folder.Write("en.txt", "{1}{1}25\n{25}{50}Hello\n");
  folder.Write("fr.txt", "{1}{1}25\n{50}{75}Bonjour\n");
  folder.Write("subs/Deep.TXT", "{10}{20}deep\n");
  const std::string head = " [micro dvd ini file] \n[Subtitles]\n";
  folder.Write("loop.ini", head + "1=Lng:Any\nFile=self.ini\n");
  folder.Write("chain.ini", head + "1=Lng:Any\nFile=en.txt\n");
  const std::string two = head + "1=Lng:English\nFile=en.txt\n2=Lng:French ; the second\n"
                                 "File=fr.txt\n";
  const std::string deep = "1=Lng:Any\nFile=";
  const struct {
    const char* name;
    std::string ini;
    const char* language;
    int result;
    int32_t index;
    const char* streams;
    std::string entries;  // "frames " first while the times are frame numbers
  } cases[] = {
      {"preferred", two, "FRENCH", 0, 1, "English|French|", "2000-3000:Bonjour|"},
      {"falls back to the first", two, "German", 0, 0, "English|French|", "1000-2000:Hello|"},
      {"a language waiting for its file ignores the next",
       head + "1=Lng:English\n2=Lng:French\nFile=fr.txt\n", "French", 0, 0, "English|",
       "2000-3000:Bonjour|"},
      {"relative folder", head + "Directory=subs\n" + deep + "Deep.TXT\n", "", 0, 0, "Any|",
       "frames 10-20:deep|"},
      {"absolute folder",
       head + "DIRECTORY=" + (folder.path() / "subs").string() + "\n" + deep + "Deep.TXT\n", "",
       0, 0, "Any|", "frames 10-20:deep|"},
      {"other letter case", head + "Directory=./subs/\n" + deep + "deep.txt\n", "", 0, 0, "Any|",
       "frames 10-20:deep|"},
      {"backslashes", head + "Directory=.\n" + deep + "subs\\deep.txt\n", "", 0, 0, "Any|",
       "frames 10-20:deep|"},
      {"folder in other letters", head + "Directory=SUBS\n" + deep + "deep.txt\n", "", 0, 0,
       "Any|", "frames 10-20:deep|"},
      {"a chain within the bound", head + "1=Lng:Any\nFile=chain.ini\n", "", 0, 0, "Any|",
       "1000-2000:Hello|"},
      {"no header", "[Subtitles]\n1=Lng:English\nFile=en.txt\n", "", -1, 0, "", ""},
      {"language without its file", head + "1=Lng:English\n", "", -1, 0, "", ""},
      {"outside the subtitles section",
       " [micro dvd ini file] \n[Other]\n1=Lng:English\nFile=en.txt\n", "", -1, 0, "", ""},
      {"file commented out", head + "1=Lng:English\n;File=en.txt\n", "", -1, 0, "", ""},
      {"missing file", head + "1=Lng:English\nFile=none.txt\n", "", -1, 0, "", ""},
      {"folder climbing above the root",
       head + "Directory=../../../../../../../../../../..\n1=Lng:English\nFile=en.txt\n", "", -1,
       0, "", ""},
      {"names itself", head + "1=Lng:Self\nFile=self.ini\n", "", -1, 0, "", ""},
      {"files naming each other", head + "1=Lng:Any\nFile=loop.ini\n", "", -1, 0, "", ""},
  };
  for (const auto& c : cases) {
    const std::string path = folder.Write("self.ini", c.ini);
    SubtitleTrack track;
    track.preferredLanguage.Assign(c.language);
    EXPECT_EQ(ReadMicroDvdIni(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(testing::StreamNames(track), c.streams) << c.name;
    EXPECT_EQ(track.streamIndex, c.index) << c.name;
    EXPECT_EQ((track.framesPending ? "frames " : "") + DescribeEntries(track), c.entries) << c.name;
    if (c.result == 0) {
      EXPECT_EQ(track.fileName, path.c_str()) << c.name;
      EXPECT_EQ(track.formatName, "MicroDVD-INI") << c.name;
    }
  }
  // A bare file name has no folder to resolve.
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  SubtitleTrack track;
  EXPECT_EQ(ReadMicroDvdIni(track, "chain.ini"), -1);
  std::filesystem::current_path(before);
}

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
  EXPECT_EQ(Lines("abcdef\n", 4), (L{"abc", "def", "\n"}));  // long lines: SubRip's case
}

TEST(ReadLineString, HasNoLengthLimit) {
  const std::string bytes = std::string(5000, 'y') + "\nz";
  StdFile file;
  ASSERT_EQ(file.OpenMemory(bytes.data(), bytes.size(), "rb"), 0);
  DynString line;
  ASSERT_EQ(ReadLineString(file, line), 0);
  RemoveLineFeed(line);
  EXPECT_EQ(line.Length(), 5000u);
  ASSERT_EQ(ReadLineString(file, line), 0);
  EXPECT_EQ(line, "z");
  EXPECT_EQ(ReadLineString(file, line), 1);
}

TEST(TimeScanners, FollowTheirPatterns) {
  const struct {
    int32_t (*scan)(const char*);
    const char* text;
    int32_t ms;
  } cases[] = {
      {ScanBracketedTime, "[1:2:3]", 3723000},
      {ScanBracketedTime, "[01:02]", -1},
      {ScanBracketedTime, nullptr, -1},
      {ScanCommaMillisTime, " 1:2:3,4", 3723004},
      {ScanCommaMillisTime, "00:00:01,1234", 1123},
      {ScanPlainTime, "100:0:1", 360001000},
      {ScanPlainTime, "1:x:1", -1},
      {ScanPlainTime, "99999999999:0:0", -3600000},  // saturates, then wraps: defined, not UB
  };
  for (const auto& c : cases) EXPECT_EQ(c.scan(c.text), c.ms) << (c.text ? c.text : "null");
}

}  // namespace
}  // namespace korvalin
