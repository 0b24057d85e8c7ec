#include "subtitles/readers/vobsub_reader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"
#include "vobsub_writer.h"

namespace korvalin {
namespace {

using testing::BlockUnit;
using testing::IndexHeader;
using testing::SubStream;
using testing::TempFolder;
using testing::TimestampLine;
using testing::UnitSpec;

// Writes name.sub and name.idx into folder; returns the ".sub" path.
std::string WriteVobSub(const TempFolder& folder, const std::string& sub, const std::string& idx,
                        const std::string& subName = "movie.sub",
                        const std::string& idxName = "movie.idx") {
  folder.Write(idxName, idx);
  return folder.Write(subName, sub);
}

int Read(SubtitleTrack& track, const std::string& path, const char* language = "") {
  track.preferredLanguage.Assign(language);
  return ReadVobSub(track, path.c_str());
}

TEST(ReadVobSub, ReadsOneStreamAsCroppedPictureEntries) {
  const TempFolder folder;
  SubStream sub;
  UnitSpec first = BlockUnit(30, 8);
  first.rows[0] = {{5, 0}, {25, 1}};  // column 0..4 transparent on every row: cropped away
  for (auto& row : first.rows) row = {{5, 0}, {25, 1}};
  const int64_t a = sub.Add(first);
  const int64_t b = sub.Add(BlockUnit(12, 3, 45));
  const std::string idx =
      IndexHeader() + "id: en, index: 0\n" + TimestampLine(1000, a) + TimestampLine(62500, b);
  SubtitleTrack track;
  ASSERT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx)), 0);
  EXPECT_EQ(track.formatName, "VobSub 6");
  EXPECT_EQ(track.fileName, (folder.path() / "movie.sub").string().c_str());
  ASSERT_EQ(track.streamNames.Count(), 1u);
  EXPECT_EQ(*track.streamNames[0], "English");
  EXPECT_EQ(track.streamIndex, 0);
  ASSERT_EQ(track.entries.Count(), 2u);
  const SubtitleEntry& e0 = *track.entries[0];
  EXPECT_EQ(e0.kind, SubtitleEntryKind::Picture);
  EXPECT_EQ(e0.start, 1000);
  EXPECT_EQ(e0.stop, 1000 + 1137);
  ASSERT_TRUE(e0.picture);
  EXPECT_EQ(e0.picture->width, 25);
  EXPECT_EQ(e0.picture->height, 8);
  for (uint8_t v : e0.picture->pixels) EXPECT_EQ(v, 31);  // palette entry 1: grey 31
  EXPECT_EQ(track.entries[1]->start, 62500);
  EXPECT_EQ(track.entries[1]->stop, 62500 + 512);  // 45 x 1024 / 90
}

// Two streams, English then German, each with one unit of its own size.
struct TwoLanguages {
  TempFolder folder;
  std::string path;
  TwoLanguages() {
    SubStream sub;
    const int64_t en1 = sub.Add(BlockUnit(10, 2), 0x20);
    const int64_t de1 = sub.Add(BlockUnit(20, 4), 0x21);
    const int64_t en2 = sub.Add(BlockUnit(11, 2), 0x20);
    const int64_t de2 = sub.Add(BlockUnit(21, 4), 0x21);
    const std::string idx = IndexHeader() + "id: en, index: 0\n" + TimestampLine(1000, en1) +
                            TimestampLine(3000, en2) + "id: de, index: 1\n" +
                            TimestampLine(1500, de1) + TimestampLine(3500, de2);
    path = WriteVobSub(folder, sub.bytes(), idx);
  }
};

TEST(ReadVobSub, ReadsOnlyThePreferredLanguage) {
  const TwoLanguages files;
  SubtitleTrack track;
  ASSERT_EQ(Read(track, files.path, "german"), 0);
  ASSERT_EQ(track.streamNames.Count(), 2u);
  EXPECT_EQ(*track.streamNames[1], "German");
  EXPECT_EQ(track.streamIndex, 1);
  ASSERT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[0]->start, 1500);
  EXPECT_EQ(track.entries[0]->picture->width, 20);
  EXPECT_EQ(track.entries[1]->start, 3500);
  EXPECT_EQ(track.entries[1]->picture->width, 21);

  SubtitleTrack unknown;
  ASSERT_EQ(Read(unknown, files.path, "Klingon"), 0);
  EXPECT_EQ(unknown.streamIndex, 0);
  ASSERT_EQ(unknown.entries.Count(), 2u);
  EXPECT_EQ(unknown.entries[0]->start, 1000);
  EXPECT_EQ(unknown.entries[0]->picture->width, 10);
}

TEST(ReadVobSub, ReadsEveryBlockOfTheSameLanguage) {
  const TempFolder folder;
  SubStream sub;
  const int64_t a = sub.Add(BlockUnit(4, 2));
  const int64_t b = sub.Add(BlockUnit(5, 2), 0x21);
  const int64_t c = sub.Add(BlockUnit(6, 2), 0x22);
  const std::string idx = IndexHeader() + "id: en\n" + TimestampLine(1000, a) + "id: en\n" +
                          TimestampLine(2000, b) + "id: fr\n" + TimestampLine(500, c);
  SubtitleTrack track;
  ASSERT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx), "English"), 0);
  ASSERT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[1]->picture->width, 5);
  EXPECT_EQ(track.streamNames.Count(), 3u);
}

TEST(ReadVobSub, AppliesDelays) {
  const TempFolder folder;
  SubStream sub;
  const int64_t a = sub.Add(BlockUnit(4, 2));
  const std::string idx = IndexHeader() + "delay: 00:10:00:000\nid: en\n" +
                          "delay: -00:00:01:000\n" + TimestampLine(5000, a) +
                          "delay: +00:00:02:500\n" + TimestampLine(5000, a) +
                          "delay: 00:00:00:100\n" + TimestampLine(5000, a);
  SubtitleTrack track;
  ASSERT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx)), 0);
  ASSERT_EQ(track.entries.Count(), 3u);
  EXPECT_EQ(track.entries[0]->start, 4000);
  EXPECT_EQ(track.entries[1]->start, 7500);
  EXPECT_EQ(track.entries[2]->start, 5100);
}

TEST(ReadVobSub, ScalesAfterCropping) {
  const TempFolder folder;
  SubStream sub;
  UnitSpec layout = BlockUnit(101, 41);
  layout.width = 120;  // 19 transparent columns at the right, cropped first
  for (auto& row : layout.rows) row.push_back({19, 0});
  const int64_t a = sub.Add(layout);
  const std::string idx =
      IndexHeader(6, true, "scale: 50%, 50%\n") + "id: en\n" + TimestampLine(1000, a);
  SubtitleTrack track;
  ASSERT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx)), 0);
  ASSERT_EQ(track.entries.Count(), 1u);
  EXPECT_EQ(track.entries[0]->picture->width, 51);
  EXPECT_EQ(track.entries[0]->picture->height, 21);
}

TEST(ReadVobSub, SmoothsWhenAskedTo) {
  const TempFolder folder;
  SubStream sub;
  UnitSpec layout = BlockUnit(6, 6);
  layout.colour = {0, 15, 1, 0};  // code 1 bright (255), code 2 dark (31)
  layout.contrast = {0, 15, 15, 0};
  layout.rows = {{{6, 2}}, {{6, 2}}, {{2, 2}, {4, 1}}, {{2, 2}, {4, 1}}, {{6, 2}}, {{6, 2}}};
  const int64_t a = sub.Add(layout);
  const std::string plainIdx = IndexHeader() + "id: en\n" + TimestampLine(1000, a);
  const std::string smoothIdx =
      IndexHeader(6, true, "smooth: ON\n") + "id: en\n" + TimestampLine(1000, a);
  SubtitleTrack plain, smooth;
  ASSERT_EQ(Read(plain, WriteVobSub(folder, sub.bytes(), plainIdx)), 0);
  ASSERT_EQ(Read(smooth, WriteVobSub(folder, sub.bytes(), smoothIdx)), 0);
  Picture expected = *plain.entries[0]->picture;
  expected.SmoothEdges();
  EXPECT_EQ(smooth.entries[0]->picture->pixels, expected.pixels);
  EXPECT_NE(smooth.entries[0]->picture->pixels, plain.entries[0]->picture->pixels);
}

TEST(ReadVobSub, ClosesOpenEndsAndDropsEmptyPictures) {
  const TempFolder folder;
  SubStream sub;
  UnitSpec noStop = BlockUnit(4, 2);
  noStop.secondSequence = false;
  const int64_t a = sub.Add(noStop);
  UnitSpec invisible = BlockUnit(4, 2);
  invisible.contrast = {0, 0, 0, 0};
  const int64_t b = sub.Add(invisible);
  const int64_t c = sub.Add(BlockUnit(4, 2));
  const std::string idx = IndexHeader() + "id: en\n" + TimestampLine(1000, a) +
                          TimestampLine(2000, b) + TimestampLine(3000, 0x7FFFFF00) +
                          TimestampLine(4000, c) + TimestampLine(1500, a);
  SubtitleTrack track;
  ASSERT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx)), 0);
  // Index order is kept (no sorting); the invisible and unreadable units are dropped.
  ASSERT_EQ(track.entries.Count(), 3u);
  EXPECT_EQ(track.entries[0]->start, 1000);
  EXPECT_EQ(track.entries[0]->stop, 1999);  // the next entry's start - 1, before removal
  EXPECT_EQ(track.entries[1]->start, 4000);
  EXPECT_EQ(track.entries[1]->stop, 4000 + 1137);
  EXPECT_EQ(track.entries[2]->start, 1500);
  EXPECT_EQ(track.entries[2]->stop, OpenEnd);
}

TEST(ReadVobSub, NoIdLineMeansNoEntries) {
  const TempFolder folder;
  SubStream sub;
  const int64_t a = sub.Add(BlockUnit(4, 2));
  SubtitleTrack track;
  EXPECT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), IndexHeader() + TimestampLine(1000, a))),
            1);
  EXPECT_EQ(track.entries.Count(), 0u);
  EXPECT_EQ(track.formatName, "VobSub 6");
}

TEST(ReadVobSub, RefusesBadIndexes) {
  const TempFolder folder;
  SubStream sub;
  const int64_t a = sub.Add(BlockUnit(4, 2));
  const std::string body = "id: en\n" + TimestampLine(1000, a);
  const struct {
    const char* what;
    std::string idx;
  } cases[] = {
      {"version 7", IndexHeader(7) + body},
      {"version 2", IndexHeader(2) + body},
      {"no number", "# VobSub index file, v\n" + body},
      {"wrong first line", "# VobSub index, v6\n" + body},
      {"empty", ""},
      {"no palette", IndexHeader(6, false) + body},
      {"short palette", IndexHeader(6, false) + "palette: 000000, 111111\n" + body},
      {"bad time stamp", IndexHeader() + "id: en\ntimestamp: 00:aa:01:000, filepos: 0\n"},
      {"no filepos", IndexHeader() + "id: en\ntimestamp: 00:00:01:000\n"},
      {"version 5 without IFO", IndexHeader(5) + body},
  };
  for (const auto& c : cases) {
    SubtitleTrack track;
    EXPECT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), c.idx)), -1) << c.what;
    EXPECT_EQ(track.entries.Count(), 0u) << c.what;
    EXPECT_TRUE(track.formatName.IsEmpty()) << c.what;
  }
  SubtitleTrack track;
  EXPECT_EQ(ReadVobSub(track, nullptr), -1);
  EXPECT_EQ(Read(track, (folder.path() / "missing.sub").string()), -1);
  folder.Write("alone.sub", sub.bytes());
  EXPECT_EQ(Read(track, (folder.path() / "alone.sub").string()), -1);  // no index
}

TEST(ReadVobSub, OlderVersionsTakeThePaletteFromTheIfo) {
  const TempFolder folder;
  SubStream sub;
  UnitSpec layout = BlockUnit(4, 2);
  layout.colour = {0, 7, 0, 0};
  const int64_t a = sub.Add(layout);
  std::array<std::array<uint8_t, 3>, 16> ycbcr{};
  for (auto& e : ycbcr) e = {16, 128, 128};
  ycbcr[7] = {235, 128, 128};  // white
  folder.Write("old.IFO", testing::IfoBytes(ycbcr));
  for (int version : {3, 4, 5}) {
    // The palette line is ignored: the IFO palette is read first.
    const std::string idx = IndexHeader(version) + "id: en\n" + TimestampLine(1000, a);
    SubtitleTrack track;
    ASSERT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx, "old.sub", "old.idx")), 0)
        << version;
    EXPECT_EQ(track.formatName, ("VobSub " + std::to_string(version)).c_str());
    for (uint8_t v : track.entries[0]->picture->pixels) EXPECT_EQ(v, 255);
  }
  folder.Write("cut.IFO", testing::IfoBytes(ycbcr).substr(0, 4200));
  SubtitleTrack track;
  EXPECT_EQ(Read(track, WriteVobSub(folder, sub.bytes(),
                                    IndexHeader(4) + "id: en\n" + TimestampLine(1000, a), "cut.sub",
                                    "cut.idx")),
            -1);
}

TEST(ReadVobSub, FindsTheIndexWithoutRegardToLetterCase) {
  const TempFolder folder;
  SubStream sub;
  const int64_t a = sub.Add(BlockUnit(4, 2));
  const std::string idx = IndexHeader() + "id: en\n" + TimestampLine(1000, a);
  for (const auto& [subName, idxName] :
       {std::pair{"a.sub", "a.idx"}, {"B.SUB", "B.IDX"}, {"c.Sub", "C.iDx"}, {"d.SUB", "d.idx"}}) {
    SubtitleTrack track;
    EXPECT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx, subName, idxName)), 0) << subName;
  }
}

TEST(ReadVobSub, ABlackPaletteColourStaysVisible) {
  const TempFolder folder;
  SubStream sub;
  UnitSpec layout = BlockUnit(4, 2);
  layout.colour = {0, 0, 0, 0};
  const int64_t a = sub.Add(layout);
  std::array<uint32_t, 16> colours{};  // all black
  const std::string idx =
      IndexHeader(6, false) + testing::PaletteLine(colours) + "id: en\n" + TimestampLine(1000, a);
  SubtitleTrack track;
  ASSERT_EQ(Read(track, WriteVobSub(folder, sub.bytes(), idx)), 0);
  for (uint8_t v : track.entries[0]->picture->pixels) EXPECT_EQ(v, 1);
}

TEST(ReadVobSub, TheLoaderReachesItThroughTheSubRow) {
  const TwoLanguages files;
  SubtitleTrack track;
  track.preferredLanguage.Assign("German");
  ASSERT_EQ(LoadSubtitleFile(track, files.path.c_str()), 0);
  EXPECT_EQ(track.formatName, "VobSub 6");
  EXPECT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[0]->start, 1500);
  // The index itself is not a subtitle file of the loader.
  EXPECT_EQ(LoadSubtitleFile(track, (files.folder.path() / "movie.idx").string().c_str()), -1);
}

std::string CorpusFile(const std::string& name) {
  std::ifstream in(std::filesystem::path(KORVALIN_CORPUS) / "vobsub" / name, std::ios::binary);
  if (!in) return {};
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// The corpus samples are version 7 indexes: refused as they are; with the version line
// changed to 6 (a copy in a temporary folder) their units load.
TEST(ReadVobSubCorpus, RealSamples) {
  const std::string tinyIdx = CorpusFile("subtitles-rs_tiny.idx");
  const std::string tinySub = CorpusFile("subtitles-rs_tiny.sub");
  const std::string exampleIdx = CorpusFile("subtitles-rs_example.idx");
  const std::string exampleSub = CorpusFile("subtitles-rs_example.sub");
  if (tinyIdx.empty() || tinySub.empty() || exampleIdx.empty() || exampleSub.empty())
    GTEST_SKIP() << "corpus not present";
  const TempFolder folder;
  SubtitleTrack track;
  EXPECT_EQ(Read(track, WriteVobSub(folder, tinySub, tinyIdx, "t7.sub", "t7.idx")), -1);
  auto asV6 = [](std::string idx) {
    idx.replace(idx.find(", v7"), 4, ", v6");
    return idx;
  };
  ASSERT_EQ(Read(track, WriteVobSub(folder, tinySub, asV6(tinyIdx), "t6.sub", "t6.idx")), 0);
  ASSERT_EQ(track.entries.Count(), 1u);
  EXPECT_EQ(track.entries[0]->start, 1000);
  EXPECT_GT(track.entries[0]->stop, 1000);
  EXPECT_TRUE(track.entries[0]->picture->HasPixels());
  ASSERT_EQ(
      Read(track, WriteVobSub(folder, exampleSub, asV6(exampleIdx), "e6.sub", "e6.idx"), "German"),
      0);
  EXPECT_EQ(*track.streamNames[0], "German");
  ASSERT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[0]->start, 49466);
  EXPECT_EQ(track.entries[1]->start, 52636);
  // The split sample's packs are shorter than 2048 bytes: its unit cannot be read.
  const std::string splitSub = CorpusFile("subtitles-rs_tiny-split.sub");
  const std::string splitIdx = CorpusFile("subtitles-rs_tiny-split.idx");
  if (!splitSub.empty() && !splitIdx.empty()) {
    EXPECT_EQ(Read(track, WriteVobSub(folder, splitSub, asV6(splitIdx), "s6.sub", "s6.idx")), 1);
  }
}

}  // namespace
}  // namespace korvalin
