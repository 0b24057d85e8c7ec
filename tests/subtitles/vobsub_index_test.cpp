#include "subtitles/readers/vobsub_index.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "vobsub_writer.h"

namespace korvalin {
namespace {

std::unique_ptr<StdFile> Open(const std::string& text, const char* mode = "rt") {
  auto f = std::make_unique<StdFile>();
  EXPECT_EQ(f->OpenMemory(text.data(), text.size(), mode), 0);
  return f;
}

TEST(VobSubKeyValue, FindsTheValueUpToACommaOrSpace) {
  EXPECT_EQ(VobSubKeyValue("timestamp: 00:01:02:500, filepos: 00001a800", "timestamp"),
            "00:01:02:500");
  EXPECT_EQ(VobSubKeyValue("timestamp: 00:01:02:500, filepos: 00001a800", "filepos"), "00001a800");
  EXPECT_EQ(VobSubKeyValue("id: de, index: 1", "id"), "de");
  EXPECT_EQ(VobSubKeyValue("id: de, index: 1", "index"), "1");
  EXPECT_EQ(VobSubKeyValue("scale: 50%, 50%", "scale"), "50%");
  EXPECT_EQ(VobSubKeyValue("id: , index: 1", "id"), "");  // directly a comma
  EXPECT_EQ(VobSubKeyValue("id:  de", "id"), "");         // directly a space
  EXPECT_EQ(VobSubKeyValue("langid: de", "id"), "");      // no space before the key
  EXPECT_EQ(VobSubKeyValue("ID: de", "id"), "");          // case-sensitive
  EXPECT_EQ(VobSubKeyValue("id:de", "id"), "");           // no space after the colon
  EXPECT_EQ(VobSubKeyValue("delay: -00:00:01:000", "delay"), "-00:00:01:000");
  EXPECT_EQ(VobSubKeyValue("a: 1, id: xx\tyy", "id"), "xx");
}

TEST(ParseVobSubVersion, NeedsTheExactSignatureAndANumber) {
  EXPECT_EQ(ParseVobSubVersion("# VobSub index file, v7 (do not modify this line!)"), 7);
  EXPECT_EQ(ParseVobSubVersion("# VobSub index file, v3"), 3);
  EXPECT_EQ(ParseVobSubVersion("# VobSub index file, v"), -1);
  EXPECT_EQ(ParseVobSubVersion("# VobSub index file, vx"), -1);
  EXPECT_EQ(ParseVobSubVersion("# vobsub index file, v6"), -1);
  EXPECT_EQ(ParseVobSubVersion("#  VobSub index file, v6"), -1);
  EXPECT_EQ(ParseVobSubVersion(""), -1);
  EXPECT_EQ(ParseVobSubVersion(nullptr), -1);
}

TEST(ParseVobSubPalette, TakesTheLowByteAsRedAndNeverGivesZero) {
  LumaPalette p;
  ASSERT_EQ(ParseVobSubPalette(
                testing::PaletteLine({0x000000, 0xffffff, 0x0000ff, 0x00ff00, 0xff0000, 0x808080})
                    .c_str(),
                p),
            0);
  EXPECT_TRUE(p.read);
  EXPECT_EQ(p.luma[0], 1);    // black stays visible
  EXPECT_EQ(p.luma[1], 255);  // white
  EXPECT_EQ(p.luma[2], 76);   // low byte: red
  EXPECT_EQ(p.luma[3], 150);  // green
  EXPECT_EQ(p.luma[4], 29);   // high byte: blue
  EXPECT_EQ(p.luma[5], 128);
  LumaPalette q;
  EXPECT_EQ(ParseVobSubPalette("palette: 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, f", q), -1);
  EXPECT_FALSE(q.read);
  EXPECT_EQ(ParseVobSubPalette("palette: 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, f, zz", q), -1);
}

TEST(ReadIfoPalette, ConvertsStudioRangeYCbCr) {
  std::array<std::array<uint8_t, 3>, 16> entries{};
  for (auto& e : entries) e = {16, 128, 128};  // black
  entries[1] = {235, 128, 128};                // white
  entries[2] = {81, 90, 240};                  // red (BT.601 studio range)
  entries[3] = {126, 128, 128};                // mid grey
  auto ifo = Open(testing::IfoBytes(entries), "rb");
  LumaPalette p;
  ASSERT_EQ(ReadIfoPalette(*ifo, p), 0);
  EXPECT_TRUE(p.read);
  EXPECT_EQ(p.luma[0], 1);
  EXPECT_EQ(p.luma[1], 255);
  EXPECT_NEAR(p.luma[2], 76, 2);
  EXPECT_NEAR(p.luma[3], 128, 2);
  // The chain offset byte moves the palette.
  auto moved = Open(testing::IfoBytes(entries, 0xF0), "rb");
  LumaPalette q;
  ASSERT_EQ(ReadIfoPalette(*moved, q), 0);
  EXPECT_EQ(q.luma, p.luma);
  // Short files fail.
  for (std::size_t size : {0ul, 4111ul, 4112ul, 4260ul + 0x20 + 63}) {
    auto cut = Open(testing::IfoBytes(entries).substr(0, size), "rb");
    LumaPalette r;
    EXPECT_EQ(ReadIfoPalette(*cut, r), -1) << size;
  }
}

TEST(ReadVobSubHeader, GathersOptionsStreamsAndPalette) {
  const std::string text = testing::IndexHeader(6, true, "smooth: on\nscale: 50%, 70%\n") +
                           "id: en, index: 0\nid: xx, index: 1\nid: DE\n" +
                           testing::PaletteLine({0xffffff});  // a second palette: ignored
  auto f = Open(text);
  VobSubHeader h;
  ASSERT_EQ(ReadVobSubHeader(*f, h), 0);
  EXPECT_TRUE(h.smooth);
  EXPECT_EQ(h.scale, 50);
  ASSERT_EQ(h.streamNames.size(), 3u);
  EXPECT_EQ(h.streamNames[0], "English");
  EXPECT_EQ(h.streamNames[1], "xx");
  EXPECT_EQ(h.streamNames[2], "German");
  EXPECT_TRUE(h.palette.read);
  EXPECT_EQ(h.palette.luma[0], 15);
  EXPECT_EQ(ChooseVobSubStream(h.streamNames, "german"), 2);
  EXPECT_EQ(ChooseVobSubStream(h.streamNames, "Klingon"), 0);
  EXPECT_EQ(ChooseVobSubStream(h.streamNames, nullptr), 0);
}

TEST(ReadVobSubHeader, ScaleZeroOrLessMeans100AndSmoothOnlyOn) {
  for (const char* scale : {"scale: 0%, 0%\n", "scale: -20%\n", "scale: x\n"}) {
    auto f = Open(testing::IndexHeader(6, true, std::string("smooth: yes\n") + scale));
    VobSubHeader h;
    ASSERT_EQ(ReadVobSubHeader(*f, h), 0);
    EXPECT_EQ(h.scale, 100) << scale;
    EXPECT_FALSE(h.smooth);
  }
}

TEST(ReadVobSubHeader, ABadPaletteLineFailsUnlessThePaletteIsRead) {
  const std::string text = testing::IndexHeader(6, false) + "palette: 000000, ffffff\n";
  auto f = Open(text);
  VobSubHeader h;
  EXPECT_EQ(ReadVobSubHeader(*f, h), -1);
  auto g = Open(text);
  VobSubHeader fromIfo;
  fromIfo.palette.read = true;
  EXPECT_EQ(ReadVobSubHeader(*g, fromIfo), 0);
}

TEST(ReadVobSubStream, ReadsTheChosenBlocksWithTheirDelays) {
  const std::string text = "delay: 00:00:09:000\nid: en\n" + testing::TimestampLine(1000, 0) +
                           "id: de\ndelay: -00:00:01:000\n" + testing::TimestampLine(5000, 0x800) +
                           "delay: +00:01:00:000\n" + testing::TimestampLine(5000, 0x1000) +
                           "id: de\n" + testing::TimestampLine(7000, 0x1800) + "id: fr\n" +
                           testing::TimestampLine(9000, 0x2000);
  auto f = Open(text);
  std::vector<VobSubTimestamp> stamps;
  ASSERT_EQ(ReadVobSubStream(*f, "German", stamps), 0);
  ASSERT_EQ(stamps.size(), 3u);
  EXPECT_EQ(stamps[0].start, 4000);
  EXPECT_EQ(stamps[0].filePosition, 0x800);
  EXPECT_EQ(stamps[1].start, 65000);
  EXPECT_EQ(stamps[2].start, 67000);  // the delay carries over an equal "id" line
  EXPECT_EQ(stamps[2].filePosition, 0x1800);
  auto g = Open(text);
  stamps.clear();
  ASSERT_EQ(ReadVobSubStream(*g, "English", stamps), 0);
  ASSERT_EQ(stamps.size(), 1u);
  EXPECT_EQ(stamps[0].start, 1000);  // the delay before its "id" line has no effect
}

TEST(ReadVobSubStream, FailsOnBadTimeStampsAndFilePositions) {
  for (const char* bad :
       {"timestamp: 00:0x:01:000, filepos: 000000000\n", "timestamp: 00:00:01:000\n",
        "timestamp: 00:00:01:000, filepos: zz\n", "timestamp: 00:00:01:000, filepos: \n"}) {
    auto f = Open(std::string("id: en\n") + bad);
    std::vector<VobSubTimestamp> stamps;
    EXPECT_EQ(ReadVobSubStream(*f, "English", stamps), -1) << bad;
  }
  // Outside the chosen stream nothing is scanned.
  auto f = Open("timestamp: bad\nid: de\ntimestamp: bad\nid: en\n");
  std::vector<VobSubTimestamp> stamps;
  EXPECT_EQ(ReadVobSubStream(*f, "English", stamps), 0);
  EXPECT_TRUE(stamps.empty());
}

TEST(ReadVobSubStream, ReadsLargeFilePositions) {
  auto f = Open("id: en\ntimestamp: 00:00:01:000, filepos: 1234567890ab\n");
  std::vector<VobSubTimestamp> stamps;
  ASSERT_EQ(ReadVobSubStream(*f, "English", stamps), 0);
  ASSERT_EQ(stamps.size(), 1u);
  EXPECT_EQ(stamps[0].filePosition, 0x1234567890abLL);
}

}  // namespace
}  // namespace korvalin
