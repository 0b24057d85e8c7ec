// Files built to make a reader hang or exhaust memory, at test size: each loads (or is refused)
// quickly, and pictures named many times are decoded once. Times are checked only against a
// loose bound that the linear loads here stay far below, while the quadratic ones they replace
// took minutes at these sizes.
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>

#include "attack_files.h"
#include "loader_detection_entries.h"
#include "subtitles/readers/dvdsubtitle_reader.h"
#include "subtitles/readers/ssa_reader.h"
#include "subtitles/readers/vobsub_reader.h"
#include "subtitles/readers/vobsub_units.h"
#include "subtitles/subtitle_discovery.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::Repeated;
using testing::TempFolder;

constexpr double kLooseSeconds = 10;

struct TimedResult {
  int result;
  double seconds;
};

TimedResult TimedLoad(SubtitleTrack& track, const std::string& path) {
  const auto begin = std::chrono::steady_clock::now();
  const int result = LoadSubtitleFile(track, path.c_str());
  return {result, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};
}

// How many distinct pictures the track's entries hold.
std::size_t DistinctPictures(const SubtitleTrack& track) {
  std::set<const Picture*> pictures;
  for (const SubtitleEntry* entry : track.entries) pictures.insert(entry->picture.get());
  return pictures.size();
}

TEST(BoundedLoads, SamiFilesThatUsedToTakeQuadraticTime) {
  const struct {
    const char* name;
    std::string bytes;
    std::string firstEntry;
  } cases[] = {
      {"unclosed comments", testing::SamiUnclosedComments(200000), "1000-2147483647:Hello|"},
      {"unclosed styles", testing::SamiUnclosedStyles(200000), "1000-2147483647:Hello|"},
      {"named entities", testing::SamiEntityCaption(300000, "&nbsp;&amp;"), ""},
      {"references without semicolons", testing::SamiEntityCaption(1200000, "&#1"), ""},
      {"classes", testing::SamiClasses(80000), "1000-2147483647:line 0|"},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const TimedResult load = TimedLoad(track, folder.Write("attack.smi", c.bytes));
    EXPECT_EQ(load.result, 0) << c.name;
    EXPECT_LT(load.seconds, kLooseSeconds) << c.name;
    ASSERT_EQ(track.entries.Count(), 1u) << c.name;
    if (!c.firstEntry.empty()) {
      EXPECT_EQ(DescribeEntries(track), c.firstEntry) << c.name;
    }
  }
  SubtitleTrack named;
  TimedLoad(named, folder.Write("named.smi", testing::SamiEntityCaption(3, "&nbsp;&amp;")));
  EXPECT_EQ(DescribeEntries(named), "1000-8999:\xC3\xA9 & & &x|");
  SubtitleTrack classes;
  TimedLoad(classes, folder.Write("classes.smi", testing::SamiClasses(100)));
  EXPECT_EQ(classes.streamNames.Count(), 100u);  // every class used; "First" is not
}

TEST(BoundedLoads, RealTextTimeTagsInReverseOrder) {
  const TempFolder folder;
  SubtitleTrack track;
  const TimedResult load =
      TimedLoad(track, folder.Write("a.rt", testing::RealTextReverseTimes(20000)));
  ASSERT_EQ(load.result, 0);
  EXPECT_LT(load.seconds, kLooseSeconds);
  ASSERT_EQ(track.entries.Count(), 20000u);
  EXPECT_EQ(track.entries[0]->start, 1500);
  EXPECT_TRUE(std::string(track.entries[0]->text.c_str()).ends_with("line 2\n line 1"));
  EXPECT_EQ(track.entries[19999]->text, "line 20000");
  for (std::size_t i = 1; i < track.entries.Count(); ++i) {
    ASSERT_EQ(track.entries[i]->start, track.entries[i - 1]->start + 1000) << i;
  }
}

// Every time tag stores the text so far once more: a file that would store far more than its
// size is refused rather than filling memory.
TEST(BoundedLoads, RealTextThatNeverClearsIsRefusedBeyondItsStorage) {
  const TempFolder folder;
  const std::string shown = "<time begin=0>" + std::string(600, 'x');
  SubtitleTrack track;
  EXPECT_EQ(
      TimedLoad(track, folder.Write("a.rt", shown + Repeated("<time begin=1>", 100000))).result,
      -1);
  EXPECT_TRUE(track.entries.IsEmpty());
  std::string fewer = shown;
  for (int i = 1; i <= 5000; ++i) fewer += "<time begin=" + std::to_string(i) + ">";
  EXPECT_EQ(TimedLoad(track, folder.Write("a.rt", fewer)).result, 0);
  EXPECT_EQ(track.entries.Count(), 5001u);
}

struct VobSubFolder {
  TempFolder folder;
  std::string Write(const testing::VobSubFiles& files) const {
    folder.Write("movie.idx", files.idx);
    return folder.Write("movie.sub", files.sub);
  }
};

TEST(BoundedLoads, VobSubStampsAtOneUnitShareOnePicture) {
  const VobSubFolder files;
  SubtitleTrack one, many;
  ASSERT_EQ(LoadSubtitleFile(one, files.Write(testing::VobSubStampsAtOneUnit(1)).c_str()), 0);
  const TimedResult load = TimedLoad(many, files.Write(testing::VobSubStampsAtOneUnit(20000)));
  ASSERT_EQ(load.result, 0);
  EXPECT_LT(load.seconds, kLooseSeconds);
  ASSERT_EQ(many.entries.Count(), 20000u);
  EXPECT_EQ(DistinctPictures(many), 1u);
  EXPECT_EQ(many.entries[19999]->picture->pixels, one.entries[0]->picture->pixels);
  EXPECT_TRUE(DescribeEntries(many).starts_with(DescribeEntries(one)));
}

TEST(BoundedLoads, VobSubLargeUnitSmoothedAndScaled) {
  const VobSubFolder files;
  const testing::VobSubFiles large =
      testing::VobSubLargeUnit(2048, "smooth: ON\nscale: 200%, 200%\n", 3);
  SubtitleTrack track;
  const TimedResult load = TimedLoad(track, files.Write(large));
  ASSERT_EQ(load.result, 0);
  EXPECT_LT(load.seconds, kLooseSeconds);
  EXPECT_EQ(DescribeEntries(track),
            "1000-4413:[picture 4096x4096]|6000-9413:[picture 4096x4096]|"
            "11000-14413:[picture 4096x4096]|");
  EXPECT_EQ(DistinctPictures(track), 1u);
  // 16 MiB scaled from 4 MiB decoded: beyond a 8 MiB budget.
  EXPECT_EQ(ReadVobSub(track, files.folder.path().string().append("/movie.sub").c_str(), 8 << 20),
            -1);
  EXPECT_TRUE(track.entries.IsEmpty());
}

TEST(BoundedLoads, VobSubUnitsBeyondTheByteBudgetAreRefused) {
  const VobSubFolder files;
  testing::SubStream sub;
  std::string idx = testing::IndexHeader() + "id: en\n";
  for (int i = 0; i < 5; ++i)
    idx += testing::TimestampLine(1000 * i, sub.Add(testing::BlockUnit(100, 10 + i)));
  const std::string path = files.Write({sub.bytes(), idx});
  SubtitleTrack track;
  EXPECT_EQ(ReadVobSub(track, path.c_str(), 6000), 0);  // 1000 + 1100 + ... + 1400 bytes
  EXPECT_EQ(track.entries.Count(), 5u);
  EXPECT_EQ(ReadVobSub(track, path.c_str(), 5999), -1);
  EXPECT_TRUE(track.entries.IsEmpty());
}

// Units whose packs never come: each one reads the rest of the file looking for them. The
// reads of one load are limited, and a load that reaches the limit is refused.
TEST(BoundedLoads, VobSubReadsOfTheSubFileAreLimited) {
  const TempFolder folder;
  std::string unit;
  testing::PutU16(unit, 0xFFFF);  // far more than one pack holds
  testing::PutU16(unit, 0x100);
  std::string bytes;
  for (int i = 0; i < 64; ++i) bytes += testing::BuildPack(unit + std::string(100, '\x11'));
  LimitedReadFile sub;
  ASSERT_EQ(sub.Open(folder.Write("a.sub", bytes).c_str(), "rb"), 0);
  VobSubHeader header;
  header.palette.read = true;
  VobSubUnits units(sub, header);
  sub.SetReadLimit(20 * bytes.size());  // reading on to the end for each unit needs 32
  for (int64_t i = 0; i < 64 && !units.Exhausted(); ++i) {
    EXPECT_FALSE(units.At(i * 2048).picture->HasPixels());
  }
  EXPECT_TRUE(units.Exhausted());
}

TEST(BoundedLoads, PictureEventsNamingOneBitmapShareIt) {
  const TempFolder folder;
  const std::string bitmap = folder.Write("big.bmp", testing::BandedBitmap(300, 200));
  const std::string spellings[] = {bitmap, (folder.path() / "." / "big.bmp").string()};
  std::string ssa = testing::SsaPictureEvents(500, spellings[0]);
  ssa += testing::SsaPictureEvents(500, spellings[1]).substr(ssa.find("Picture:"));
  SubtitleTrack track;
  const TimedResult load = TimedLoad(track, folder.Write("a.ssa", ssa));
  ASSERT_EQ(load.result, 0);
  EXPECT_EQ(track.entries.Count(), 1000u);
  EXPECT_EQ(DistinctPictures(track), 1u);
  EXPECT_EQ(track.entries[999]->picture->width, 300);
  EXPECT_EQ(ReadSubStationAlpha(track, folder.Write("a.ssa", ssa).c_str(), 300 * 200), 0);
  EXPECT_EQ(ReadSubStationAlpha(track, folder.Write("a.ssa", ssa).c_str(), 300 * 200 - 1), -1);

  const std::string dvd =
      "{T 00:00:01:00 P=big.bmp\n}" + Repeated("{T 00:00:02:00 D=10 P=BIG.bmp\n}", 999);
  ASSERT_EQ(LoadSubtitleFile(track, folder.Write("a.sub", dvd).c_str()), 0);
  EXPECT_EQ(track.formatName, "DVDSubtitle");
  EXPECT_EQ(DistinctPictures(track), 1u);
  EXPECT_EQ(ReadDvdSubtitle(track, folder.Write("a.sub", dvd).c_str(), 300 * 200 - 1), -1);
}

TEST(BoundedLoads, IniDirectoryClimbingFolderAfterFolder) {
  const TempFolder folder;
  folder.Write("d/a.srt", "1\n00:00:01,000 --> 00:00:02,000\nHi\n");
  const std::string ini = "[Micro DVD Ini File]\n[SUBTITLES]\nDirectory=d/" +
                          Repeated("x/../", 400000) + "\n1=xxxxEnglish\nFile=a.srt\n";
  SubtitleTrack track;
  const TimedResult load = TimedLoad(track, folder.Write("a.ini", ini));
  EXPECT_EQ(load.result, 0);
  EXPECT_LT(load.seconds, kLooseSeconds);
  EXPECT_EQ(track.formatName, "MicroDVD-INI");
}

}  // namespace
}  // namespace korvalin
