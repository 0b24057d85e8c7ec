#include "subtitles/readers/dvdsubtitle_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "loader_detection_entries.h"
#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::TempFolder;

void PutLittleEndian(std::string& bytes, uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

// A white 2 x 1 picture as an uncompressed 24-bit BMP file.
std::string WhiteBitmap() {
  std::string bmp = "BM";
  for (uint32_t field : {62u, 0u, 54u}) PutLittleEndian(bmp, field, 4);
  PutLittleEndian(bmp, 40, 4);
  PutLittleEndian(bmp, 2, 4);
  PutLittleEndian(bmp, 1, 4);
  PutLittleEndian(bmp, 1, 2);
  PutLittleEndian(bmp, 24, 2);
  for (uint32_t field : {0u, 8u, 0u, 0u, 0u, 0u}) PutLittleEndian(bmp, field, 4);
  return bmp + std::string(6, '\xFF') + std::string(2, '\0');
}

TEST(DvdSubtitleReader, ReadsBlocksAndRejectsBrokenOnes) {
  const struct {
    const char* name;
    std::string bytes;
    int result;
    int32_t fileDelay;
    std::string entries;
  } cases[] = {
      {"duration", "{T 00:00:30:00 D=300\nHello\nthere\n}", 0, 0, "30000-33000:Hello/there|"},
      {"open ends", "junk {T 00:00:01:10\nA\n} more junk {T 00:00:02:300\nB\n}", 0, 0,
       "1100-2299:A|2300-2147483647:B|"},
      {"head first", "{HEAD\nDISCID=x\nSUBDELAY=50\n}{T 00:00:01:00\nA\n}", 0, 500,
       "1000-2147483647:A|"},
      {"skipped blocks", "{}{T no line feed}{X\n}{T 00:00:01:00\nA\n}{T 00:00:09:00\n", 0, 0,
       "1000-2147483647:A|"},
      {"empty text", "{T 00:00:01:00\n \n}", 1, 0, ""},
      {"head after a subtitle", "{T 00:00:01:00\nA\n}{HEAD\nSUBDELAY=5\n}", -1, 0, ""},
      {"bad start", "{T 00:xx:01:00\nA\n}", -1, 0, ""},
      {"bad duration", "{T 00:00:01:00 D=x\nA\n}", -1, 0, ""},
      {"MicroDVD", "{1}{25}Hello\n", 1, 0, ""},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write("case.sub", c.bytes);
    EXPECT_EQ(ReadDvdSubtitle(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(track.fileDelay, c.fileDelay) << c.name;
    if (c.result == 0) {
      EXPECT_EQ(DescribeEntries(track), c.entries) << c.name;
    }
    EXPECT_EQ(track.formatName, "DVDSubtitle") << c.name;
  }
}

TEST(DvdSubtitleReader, PictureBlocksLoadFromTheSubtitleFolder) {
  const TempFolder folder;
  folder.Write("movie/pics/One.BMP", WhiteBitmap());
  const std::string path = folder.Write(
      "movie/a.sub",
      "{T 00:00:01:00 D=100 P=pics\\one.bmp\nignored\n}{T 00:00:05:00 P=missing.bmp\nx\n}");
  SubtitleTrack track;
  ASSERT_EQ(ReadDvdSubtitle(track, path.c_str()), 0);
  EXPECT_EQ(DescribeEntries(track), "1000-2000:[picture 2x1]|");  // the missing one is dropped
}

TEST(DvdSubtitleReader, LoaderReachesItAfterTheReadersBeforeItRefuse) {
  const TempFolder folder;
  for (const char* name : {"a.sub", "a.srt", "a.txt"}) {
    const std::string path = folder.Write(name, "{T 00:00:01:00\nA\n}");
    SubtitleTrack track;
    EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), 0) << name;
    EXPECT_EQ(track.formatName, "DVDSubtitle") << name;
  }
}

}  // namespace
}  // namespace korvalin
