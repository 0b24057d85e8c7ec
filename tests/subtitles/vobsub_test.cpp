#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "loader_detection_entries.h"
#include "subtitles/readers/vobsub_index.h"
#include "subtitles/readers/vobsub_reader.h"
#include "subtitles/subtitle_loader.h"
#include "vobsub_writer.h"

namespace korvalin {
namespace {

using testing::BlockUnit;
using testing::DescribeEntries;
using testing::IndexHeader;
using testing::SubStream;
using testing::TimestampLine;
using testing::UnitSpec;

// A folder of VobSub file pairs.
struct VobSubFolder {
  testing::TempFolder folder;
  // Writes base.sub and base.idx (or the given index name); returns the ".sub" path.
  std::string Write(const std::string& sub, const std::string& idx,
                    const std::string& subName = "movie.sub",
                    const std::string& idxName = "movie.idx") const {
    folder.Write(idxName, idx);
    return folder.Write(subName, sub);
  }
  int Read(SubtitleTrack& track, const std::string& sub, const std::string& idx,
           const char* language = "") const {
    track.preferredLanguage.Assign(language);
    return ReadVobSub(track, Write(sub, idx).c_str());
  }
};

std::unique_ptr<StdFile> Open(const std::string& text, const char* mode = "rt") {
  auto f = std::make_unique<StdFile>();
  EXPECT_EQ(f->OpenMemory(text.data(), text.size(), mode), 0);
  return f;
}

TEST(ReadVobSub, ReadsOneStreamAsCroppedPictureEntries) {
  const VobSubFolder files;
  SubStream sub;
  UnitSpec first = BlockUnit(30, 8);
  for (auto& row : first.rows) row = {{5, 0}, {25, 1}};  // columns 0..4 transparent: cropped
  const int64_t a = sub.Add(first);
  const int64_t b = sub.Add(BlockUnit(12, 3, 45));
  SubtitleTrack track;
  ASSERT_EQ(files.Read(track, sub.bytes(), IndexHeader() + "id: en, index: 0\n" +
                                               TimestampLine(1000, a) + TimestampLine(62500, b)),
            0);
  EXPECT_EQ(track.formatName, "VobSub 6");
  EXPECT_EQ(track.fileName, (files.folder.path() / "movie.sub").string().c_str());
  EXPECT_EQ(testing::StreamNames(track), "English|");
  // Unit delays 100 and 45 (x 1024 / 90) give 1137 and 512 ms.
  EXPECT_EQ(DescribeEntries(track), "1000-2137:[picture 25x8]|62500-63012:[picture 12x3]|");
  for (uint8_t v : track.entries[0]->picture->pixels) EXPECT_EQ(v, 31);  // grey entry 1
}

TEST(ReadVobSub, ReadsOnlyThePreferredLanguage) {
  const VobSubFolder files;
  SubStream sub;
  const int64_t en1 = sub.Add(BlockUnit(10, 2), 0x20);
  const int64_t de1 = sub.Add(BlockUnit(20, 4), 0x21);
  const int64_t en2 = sub.Add(BlockUnit(11, 2), 0x20);
  const int64_t de2 = sub.Add(BlockUnit(21, 4), 0x21);
  const std::string path =
      files.Write(sub.bytes(), IndexHeader() + "id: en, index: 0\n" + TimestampLine(1000, en1) +
                                   TimestampLine(3000, en2) + "id: de, index: 1\n" +
                                   TimestampLine(1500, de1) + TimestampLine(3500, de2));
  const struct {
    const char* language;
    int32_t index;
    const char* entries;
  } cases[] = {
      {"german", 1, "1500-2637:[picture 20x4]|3500-4637:[picture 21x4]|"},
      {"Klingon", 0, "1000-2137:[picture 10x2]|3000-4137:[picture 11x2]|"},
  };
  for (const auto& c : cases) {
    for (auto read : {ReadVobSub, LoadSubtitleFile}) {
      SubtitleTrack track;
      track.preferredLanguage.Assign(c.language);
      ASSERT_EQ(read(track, path.c_str()), 0) << c.language;
      EXPECT_EQ(testing::StreamNames(track), "English|German|");
      EXPECT_EQ(track.streamIndex, c.index) << c.language;
      EXPECT_EQ(DescribeEntries(track), c.entries) << c.language;
    }
  }
  SubtitleTrack track;  // the index itself is not a subtitle file of the loader
  EXPECT_EQ(LoadSubtitleFile(track, (files.folder.path() / "movie.idx").c_str()), -1);
}

TEST(ReadVobSub, ReadsEveryBlockOfTheSameLanguageWithItsDelay) {
  const VobSubFolder files;
  SubStream sub;
  const int64_t a = sub.Add(BlockUnit(4, 2));
  const int64_t b = sub.Add(BlockUnit(5, 2), 0x21);
  const int64_t c = sub.Add(BlockUnit(6, 2), 0x22);
  SubtitleTrack track;
  // A delay before the first "id" line has no effect; one carries over an equal "id" line.
  ASSERT_EQ(files.Read(track, sub.bytes(),
                       IndexHeader() + "delay: 00:10:00:000\nid: en\ndelay: -00:00:01:000\n" +
                           TimestampLine(5000, a) + "delay: +00:00:02:500\n" +
                           TimestampLine(5000, a) + "id: en\n" + TimestampLine(5000, b) +
                           "id: fr\n" + TimestampLine(500, c),
                       "English"),
            0);
  EXPECT_EQ(testing::StreamNames(track), "English|English|French|");
  EXPECT_EQ(DescribeEntries(track),
            "4000-5137:[picture 4x2]|7500-8637:[picture 4x2]|7500-8637:[picture 5x2]|");
}

TEST(ReadVobSub, ScalesAfterCroppingAndSmoothsWhenAskedTo) {
  const VobSubFolder files;
  SubStream sub;
  UnitSpec wide = BlockUnit(101, 41);
  wide.width = 120;  // 19 transparent columns at the right, cropped first
  for (auto& row : wide.rows) row.push_back({19, 0});
  const int64_t a = sub.Add(wide);
  SubtitleTrack track;
  ASSERT_EQ(files.Read(track, sub.bytes(),
                       IndexHeader(6, true, "scale: 50%, 50%\n") + "id: en\n" +
                           TimestampLine(1000, a)),
            0);
  EXPECT_EQ(DescribeEntries(track), "1000-2137:[picture 51x21]|");

  UnitSpec edges = BlockUnit(6, 6);
  edges.colour = {0, 15, 1, 0};  // code 1 bright (255), code 2 dark (31)
  edges.contrast = {0, 15, 15, 0};
  edges.rows = {{{6, 2}}, {{6, 2}}, {{2, 2}, {4, 1}}, {{2, 2}, {4, 1}}, {{6, 2}}, {{6, 2}}};
  const int64_t b = sub.Add(edges);
  SubtitleTrack plain, smooth;
  ASSERT_EQ(files.Read(plain, sub.bytes(), IndexHeader() + "id: en\n" + TimestampLine(1, b)), 0);
  ASSERT_EQ(files.Read(smooth, sub.bytes(),
                       IndexHeader(6, true, "smooth: ON\n") + "id: en\n" + TimestampLine(1, b)),
            0);
  Picture expected = *plain.entries[0]->picture;
  expected.SmoothEdges();
  EXPECT_EQ(smooth.entries[0]->picture->pixels, expected.pixels);
  EXPECT_NE(smooth.entries[0]->picture->pixels, plain.entries[0]->picture->pixels);
}

TEST(ReadVobSub, ClosesOpenEndsAndDropsEmptyAndDamagedUnits) {
  const VobSubFolder files;
  SubStream sub;
  UnitSpec noStop = BlockUnit(4, 2);
  noStop.secondSequence = false;
  const int64_t a = sub.Add(noStop);
  UnitSpec invisible = BlockUnit(4, 2);
  invisible.contrast = {0, 0, 0, 0};
  const int64_t b = sub.Add(invisible);
  const int64_t c = sub.Add(BlockUnit(4, 2));
  SubtitleTrack track;
  ASSERT_EQ(files.Read(track, sub.bytes(),
                       IndexHeader() + "id: en\n" + TimestampLine(1000, a) +
                           TimestampLine(2000, b) + TimestampLine(3000, 0x7FFFFF00) +
                           TimestampLine(4000, c) + TimestampLine(1500, a)),
            0);
  // Index order is kept; the open end closes at the next start before the removal.
  EXPECT_EQ(DescribeEntries(track),
            "1000-1999:[picture 4x2]|4000-5137:[picture 4x2]|1500-2147483647:[picture 4x2]|");
}

TEST(ReadVobSub, RefusesBadIndexes) {
  const VobSubFolder files;
  SubStream sub;
  const int64_t a = sub.Add(BlockUnit(4, 2));
  const std::string body = "id: en\n" + TimestampLine(1000, a);
  const struct {
    const char* what;
    std::string idx;
    int result;
  } cases[] = {
      {"version 7", IndexHeader(7) + body, -1},
      {"version 2", IndexHeader(2) + body, -1},
      {"no number", "# VobSub index file, v\n" + body, -1},
      {"wrong first line", "# VobSub index, v6\n" + body, -1},
      {"letter case of the first line", "# vobsub index file, v6\n" + body, -1},
      {"empty", "", -1},
      {"no palette", IndexHeader(6, false) + body, -1},
      {"short palette", IndexHeader(6, false) + "palette: 000000, 111111\n" + body, -1},
      {"bad time stamp", IndexHeader() + "id: en\ntimestamp: 00:aa:01:000, filepos: 0\n", -1},
      {"no filepos", IndexHeader() + "id: en\ntimestamp: 00:00:01:000\n", -1},
      {"bad filepos", IndexHeader() + "id: en\ntimestamp: 00:00:01:000, filepos: zz\n", -1},
      {"empty filepos", IndexHeader() + "id: en\ntimestamp: 00:00:01:000, filepos: \n", -1},
      {"version 5 without IFO", IndexHeader(5) + body, -1},
      {"no id line", IndexHeader() + TimestampLine(1000, a), 1},
      {"bad lines after the stream", IndexHeader() + body + "id: de\ntimestamp: x\n", 0},
  };
  for (const auto& c : cases) {
    SubtitleTrack track;
    EXPECT_EQ(files.Read(track, sub.bytes(), c.idx), c.result) << c.what;
    EXPECT_EQ(track.entries.Count(), c.result == 0 ? 1u : 0u) << c.what;
    EXPECT_EQ(track.formatName.IsEmpty(), c.result == -1) << c.what;
  }
  SubtitleTrack track;
  EXPECT_EQ(ReadVobSub(track, nullptr), -1);
  EXPECT_EQ(ReadVobSub(track, (files.folder.path() / "missing.sub").c_str()), -1);
  EXPECT_EQ(ReadVobSub(track, files.folder.Write("alone.sub", sub.bytes()).c_str()), -1);
}

TEST(ReadVobSub, OlderVersionsTakeThePaletteFromTheIfo) {
  const VobSubFolder files;
  SubStream sub;
  UnitSpec layout = BlockUnit(4, 2);
  layout.colour = {0, 7, 0, 0};
  const int64_t a = sub.Add(layout);
  std::array<std::array<uint8_t, 3>, 16> ycbcr{};
  for (auto& e : ycbcr) e = {16, 128, 128};
  ycbcr[7] = {235, 128, 128};  // white
  files.folder.Write("old.IFO", testing::IfoBytes(ycbcr));
  files.folder.Write("cut.IFO", testing::IfoBytes(ycbcr).substr(0, 4200));
  for (int version : {3, 4, 5}) {
    const std::string idx = IndexHeader(version) + "id: en\n" + TimestampLine(1000, a);
    SubtitleTrack track;  // the grey palette line is ignored
    ASSERT_EQ(ReadVobSub(track, files.Write(sub.bytes(), idx, "old.sub", "old.idx").c_str()), 0);
    EXPECT_EQ(track.formatName, ("VobSub " + std::to_string(version)).c_str());
    for (uint8_t v : track.entries[0]->picture->pixels) EXPECT_EQ(v, 255);
    EXPECT_EQ(ReadVobSub(track, files.Write(sub.bytes(), idx, "cut.sub", "cut.idx").c_str()), -1);
  }
}

TEST(ReadVobSub, FindsTheIndexWithoutRegardToLetterCase) {
  const VobSubFolder files;
  SubStream sub;
  const std::string idx = IndexHeader() + "id: en\n" + TimestampLine(1000, sub.Add(BlockUnit(4, 2)));
  for (const auto& [subName, idxName] :
       {std::pair{"a.sub", "a.idx"}, {"B.SUB", "B.IDX"}, {"c.Sub", "C.iDx"}, {"d.SUB", "d.idx"}}) {
    SubtitleTrack track;
    EXPECT_EQ(ReadVobSub(track, files.Write(sub.bytes(), idx, subName, idxName).c_str()), 0)
        << subName;
  }
}

TEST(VobSubIndex, KeyValuesAndVersion) {
  const char* const cases[][3] = {
      {"timestamp: 00:01:02:500, filepos: 00001a800", "timestamp", "00:01:02:500"},
      {"timestamp: 00:01:02:500, filepos: 00001a800", "filepos", "00001a800"},
      {"id: de, index: 1", "index", "1"},
      {"id: , index: 1", "id", ""},  // directly a comma
      {"id:  de", "id", ""},         // directly a space
      {"langid: de", "id", ""},      // no space before the key
      {"ID: de", "id", ""},          // case-sensitive
      {"id:de", "id", ""},
      {"a: 1, id: xx\tyy", "id", "xx"},
  };
  for (const auto& c : cases) EXPECT_EQ(VobSubKeyValue(c[0], c[1]), c[2]) << c[0] << " " << c[1];
  EXPECT_EQ(ParseVobSubVersion("# VobSub index file, v3"), 3);
  EXPECT_EQ(ParseVobSubVersion("#  VobSub index file, v6"), -1);
  EXPECT_EQ(ParseVobSubVersion(nullptr), -1);
}

TEST(VobSubIndex, PaletteTakesTheLowByteAsRedAndNeverGivesZero) {
  LumaPalette p;
  ASSERT_EQ(ParseVobSubPalette(
                testing::PaletteLine({0x000000, 0xffffff, 0x0000ff, 0x00ff00, 0xff0000}).c_str(),
                p),
            0);
  EXPECT_EQ(std::vector<int>(p.luma.begin(), p.luma.begin() + 5),
            (std::vector<int>{1, 255, 76, 150, 29}));
  LumaPalette q;
  EXPECT_EQ(ParseVobSubPalette("palette: 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, f, zz", q), -1);
  EXPECT_FALSE(q.read);
}

TEST(VobSubIndex, IfoPaletteConvertsStudioRangeYCbCr) {
  std::array<std::array<uint8_t, 3>, 16> entries{};
  for (auto& e : entries) e = {16, 128, 128};  // black
  entries[1] = {235, 128, 128};                // white
  entries[2] = {81, 90, 240};                  // red
  entries[3] = {126, 128, 128};                // mid grey
  LumaPalette p, moved;
  ASSERT_EQ(ReadIfoPalette(*Open(testing::IfoBytes(entries), "rb"), p), 0);
  EXPECT_EQ(p.luma[0], 1);
  EXPECT_EQ(p.luma[1], 255);
  EXPECT_NEAR(p.luma[2], 76, 2);
  EXPECT_NEAR(p.luma[3], 128, 2);
  ASSERT_EQ(ReadIfoPalette(*Open(testing::IfoBytes(entries, 0xF0), "rb"), moved), 0);
  EXPECT_EQ(moved.luma, p.luma);
  for (std::size_t size : {0ul, 4111ul, 4112ul, 4260ul + 0x20 + 63}) {
    LumaPalette r;
    EXPECT_EQ(ReadIfoPalette(*Open(testing::IfoBytes(entries).substr(0, size), "rb"), r), -1)
        << size;
  }
}

TEST(VobSubIndex, HeaderOptionsAndStreams) {
  for (const char* scale : {"scale: 0%, 0%\n", "scale: -20%\n", "scale: x\n"}) {
    VobSubHeader h;
    ASSERT_EQ(ReadVobSubHeader(*Open(IndexHeader(6, true, std::string("smooth: yes\n") + scale)), h),
              0);
    EXPECT_EQ(h.scale, 100) << scale;
    EXPECT_FALSE(h.smooth);
  }
  VobSubHeader h;
  ASSERT_EQ(ReadVobSubHeader(*Open(IndexHeader(6, true, "smooth: on\n") + "id: xx\nid: DE\n"), h),
            0);
  EXPECT_TRUE(h.smooth);
  EXPECT_EQ(h.streamNames, (std::vector<DynString>{DynString("xx"), DynString("German")}));
  EXPECT_EQ(ChooseVobSubStream(h.streamNames, nullptr), 0);
  // A bad palette line fails unless the palette was read from an IFO file.
  const std::string badPalette = IndexHeader(6, false) + "palette: 000000, ffffff\n";
  VobSubHeader fromIfo;
  fromIfo.palette.read = true;
  EXPECT_EQ(ReadVobSubHeader(*Open(badPalette), fromIfo), 0);
}

TEST(VobSubIndex, ReadsLargeFilePositions) {
  std::vector<VobSubTimestamp> stamps;
  ASSERT_EQ(ReadVobSubStream(*Open("id: en\ntimestamp: 00:00:01:000, filepos: 1234567890ab\n"),
                             "English", stamps),
            0);
  ASSERT_EQ(stamps.size(), 1u);
  EXPECT_EQ(stamps[0].filePosition, 0x1234567890abLL);
}

std::string CorpusFile(const std::string& name) {
  std::ifstream in(std::filesystem::path(KORVALIN_CORPUS) / "vobsub" / name, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// The samples are version 7 indexes: refused as they are, loaded as version 6.
TEST(ReadVobSubCorpus, RealSamples) {
  const std::string tinyIdx = CorpusFile("subtitles-rs_tiny.idx");
  const std::string tinySub = CorpusFile("subtitles-rs_tiny.sub");
  const std::string exampleIdx = CorpusFile("subtitles-rs_example.idx");
  const std::string exampleSub = CorpusFile("subtitles-rs_example.sub");
  if (tinyIdx.empty() || tinySub.empty() || exampleIdx.empty() || exampleSub.empty())
    GTEST_SKIP() << "corpus not present";
  const VobSubFolder files;
  auto asV6 = [](std::string idx) { return idx.replace(idx.find(", v7"), 4, ", v6"); };
  SubtitleTrack track;
  EXPECT_EQ(files.Read(track, tinySub, tinyIdx), -1);
  ASSERT_EQ(files.Read(track, tinySub, asV6(tinyIdx)), 0);
  ASSERT_EQ(track.entries.Count(), 1u);
  EXPECT_EQ(track.entries[0]->start, 1000);
  EXPECT_GT(track.entries[0]->stop, 1000);
  EXPECT_TRUE(track.entries[0]->picture->HasPixels());
  ASSERT_EQ(files.Read(track, exampleSub, asV6(exampleIdx), "German"), 0);
  EXPECT_EQ(*track.streamNames[0], "German");
  ASSERT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[0]->start, 49466);
  EXPECT_EQ(track.entries[1]->start, 52636);
  // The split sample's packs are shorter than 2048 bytes: its unit cannot be read.
  const std::string splitSub = CorpusFile("subtitles-rs_tiny-split.sub");
  const std::string splitIdx = CorpusFile("subtitles-rs_tiny-split.idx");
  if (!splitSub.empty() && !splitIdx.empty()) {
    EXPECT_EQ(files.Read(track, splitSub, asV6(splitIdx)), 1);
  }
}

}  // namespace
}  // namespace korvalin
