#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"
#include "subtitles/subtitle_loader.h"
#include "vobsub_writer.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::TempFolder;

// UTF-8 text (the tests' own, well formed) in a wide encoding, with its byte order mark.
std::string Widened(const std::string& utf8, int unitBytes, bool bigEndian) {
  std::u32string points;
  for (std::size_t i = 0; i < utf8.size();) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    const int extra = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t c = extra == 0 ? lead : lead & (0x3F >> extra);
    for (int k = 1; k <= extra; ++k)
      c = (c << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
    points.push_back(c);
    i += static_cast<std::size_t>(extra) + 1;
  }
  std::string out;
  const auto put = [&](uint32_t unit) {
    for (int k = 0; k < unitBytes; ++k) {
      const int shift = 8 * (bigEndian ? unitBytes - 1 - k : k);
      out.push_back(static_cast<char>(unit >> shift));
    }
  };
  put(0xFEFF);
  for (char32_t c : points) {
    if (unitBytes == 2 && c >= 0x10000) {
      put(0xD800 + ((c - 0x10000) >> 10));
      put(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      put(c);
    }
  }
  return out;
}

// Every text format, saved by a Windows editor as "Unicode" (with CR LF line ends), loads as
// it does in UTF-8, through the loader.
TEST(WideTextFiles, EveryTextFormatLoadsAsItsUtf8Twin) {
  const TempFolder folder;
  testing::SubStream sub;
  const int64_t unit = sub.Add(testing::BlockUnit(8, 2));
  folder.Write("movie.sub", sub.bytes());
  const struct {
    const char* name;
    std::string utf8;
  } cases[] = {
      {"a.srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\nCaf\xC3\xA9 \xF0\x9F\x98\x80\r\n\r\n"},
      {"sv2.sub", "[SUBTITLE]\r\n00:00:01.00,00:00:02.00\r\nCaf\xC3\xA9[br]x\r\n\r\n"},
      {"sv1.sub", "[00:00:01]\r\nCaf\xC3\xA9|x\r\n[00:00:03]\r\n\r\n"},
      {"md.txt", "{10}{20}Caf\xC3\xA9|x\r\n"},
      {"tmp.txt", "00:00:01:Caf\xC3\xA9|x\r\n"},
      {"dvd.sub", "{T 00:00:01:00 D=100\r\nCaf\xC3\xA9\r\n}"},
      {"a.ssa",
       "ScriptType: v4.00\r\nDialogue: 0,0:00:01.00,0:00:02.00,a,b,0,0,0,,Caf\xC3\xA9\r\n"},
      {"a.js", "0:00:01.00 0:00:02.00 D Caf\xC3\xA9\\nx\r\n"},
      {"a.aqt", "-->> 25\r\nCaf\xC3\xA9\r\nx\r\n"},
      {"a.rt", "<time begin=1>Caf\xC3\xA9<br/>&#233;\r\n<time begin=3><clear/>x"},
      {"a.smi", "<SAMI><BODY>\r\n<SYNC Start=1000><P>Caf\xC3\xA9<br>&#233;\r\n</BODY></SAMI>"},
      {"a.ini", "[Micro DVD Ini File]\r\n[SUBTITLES]\r\n1=xxxxFrench\r\nFile=md.txt\r\n"},
      {"movie.idx",
       testing::IndexHeader() + "id: fr, index: 0\r\n" + testing::TimestampLine(1000, unit)},
  };
  const struct {
    int unitBytes;
    bool bigEndian;
  } encodings[] = {{2, false}, {2, true}, {4, false}, {4, true}};
  for (const auto& c : cases) {
    const std::string path = folder.Write(c.name, c.utf8);
    // The index is read through the ".sub" file beside it.
    const std::string load = path.ends_with(".idx") ? (folder.path() / "movie.sub").string() : path;
    SubtitleTrack utf8;
    ASSERT_EQ(LoadSubtitleFile(utf8, load.c_str()), 0) << c.name;
    const std::string expected = DescribeEntries(utf8);
    EXPECT_EQ(expected.find('\r'), std::string::npos) << c.name << ": " << expected;
    for (const auto& e : encodings) {
      folder.Write(c.name, Widened(c.utf8, e.unitBytes, e.bigEndian));
      SubtitleTrack wide;
      EXPECT_EQ(LoadSubtitleFile(wide, load.c_str()), 0) << c.name << " " << e.unitBytes;
      EXPECT_EQ(DescribeEntries(wide), expected) << c.name << " " << e.unitBytes;
      EXPECT_EQ(wide.formatName, utf8.formatName) << c.name;
    }
    folder.Write(c.name, c.utf8);  // the INI names the MicroDVD file as UTF-8 again
  }
}

}  // namespace
}  // namespace korvalin
