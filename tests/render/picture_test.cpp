#include "render/picture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "render/picture_bmp_writer.h"

namespace korvalin {
namespace {

using testing::BmpSpec;
using testing::BuildBmp;
using testing::GreyPalette;

class TempFile {
 public:
  explicit TempFile(const std::string& bytes) {
    std::random_device random;
    path_ = (std::filesystem::temp_directory_path() /
             ("korvalin-bmp-" + std::to_string(random()) + std::to_string(random()) + ".bmp"))
                .string();
    std::ofstream(path_, std::ios::binary) << bytes;
  }
  ~TempFile() { std::filesystem::remove(path_); }
  const char* path() const { return path_.c_str(); }

 private:
  std::string path_;
};

int Load(Picture& p, const std::string& bytes) {
  const TempFile file(bytes);
  return p.LoadBitmapFile(file.path());
}

Picture FromRows(const std::vector<std::vector<uint8_t>>& rows) {
  Picture p(static_cast<int32_t>(rows[0].size()), static_cast<int32_t>(rows.size()));
  for (std::size_t y = 0; y < rows.size(); ++y)
    for (std::size_t x = 0; x < rows[y].size(); ++x) p.pixels[y * rows[0].size() + x] = rows[y][x];
  return p;
}

TEST(Picture, StartsEmptyAndFreesItsPixels) {
  Picture p;
  EXPECT_EQ(p.width, 0);
  EXPECT_EQ(p.height, 0);
  EXPECT_FALSE(p.HasPixels());
  Picture q(3, 2);
  EXPECT_EQ(q.pixels.size(), 6u);
  q.FreePixels();
  EXPECT_EQ(q.width, 0);
  EXPECT_EQ(q.height, 0);
  EXPECT_TRUE(q.pixels.empty());
  EXPECT_FALSE(Picture(0, 5).HasPixels());
  EXPECT_FALSE(Picture(-1, 5).HasPixels());
}

TEST(LoadBitmapFile, Reads24BitPixelsAsLuma) {
  BmpSpec bmp;
  bmp.width = 5;
  bmp.height = 2;
  bmp.rows = {{0xFFFFFF, 0x000000, 0xFF0000, 0x00FF00, 0x0000FF},
               {0x808080, 0x010101, 0xFFFFFF, 0xFFFFFF, 0x000000}};
  Picture p;
  ASSERT_EQ(Load(p, BuildBmp(bmp)), 0);
  ASSERT_EQ(p.width, 5);
  ASSERT_EQ(p.height, 2);
  EXPECT_EQ(p.At(0, 0), 255);  // white
  EXPECT_EQ(p.At(1, 0), 0);    // black: transparent
  EXPECT_EQ(p.At(2, 0), 76);   // red
  EXPECT_EQ(p.At(3, 0), 150);  // green
  EXPECT_EQ(p.At(4, 0), 29);   // blue
  EXPECT_EQ(p.At(0, 1), 128);
  EXPECT_EQ(p.At(1, 1), 1);  // 0.2989 + 0.5866 + 0.1145 each rounded: 1 + 1 + 0
  EXPECT_EQ(p.At(4, 1), 0);
}

TEST(LoadBitmapFile, ReadsPalettedPixels) {
  BmpSpec b8;
  b8.width = 3;
  b8.height = 2;
  b8.bits = 8;
  b8.palette = GreyPalette(256);
  b8.rows = {{0, 10, 255}, {200, 1, 2}};
  Picture p;
  ASSERT_EQ(Load(p, BuildBmp(b8)), 0);
  EXPECT_EQ(p.pixels, (std::vector<uint8_t>{0, 10, 255, 200, 1, 2}));

  // 4 bits, 5 pixels: three bytes per row, the last low nibble ignored, one padding byte.
  BmpSpec b4;
  b4.width = 5;
  b4.height = 3;
  b4.bits = 4;
  b4.palette = GreyPalette(16);
  b4.rows = {{0, 1, 2, 3, 15}, {15, 14, 13, 12, 11}, {5, 0, 5, 0, 5}};
  std::string bytes = BuildBmp(b4);
  ASSERT_EQ(bytes.size(), 14u + 40 + 64 + 3 * 4);
  bytes[14 + 40 + 64 + 2] = static_cast<char>(0x0F | bytes[14 + 40 + 64 + 2]);  // stray nibble
  ASSERT_EQ(Load(p, bytes), 0);
  EXPECT_EQ(p.pixels,
            (std::vector<uint8_t>{0, 17, 34, 51, 255, 255, 238, 221, 204, 187, 85, 0, 85, 0, 85}));

  BmpSpec b1;
  b1.width = 10;
  b1.height = 2;
  b1.bits = 1;
  b1.palette = {{0, 0, 0}, {255, 255, 255}};
  b1.rows = {{1, 0, 0, 0, 0, 0, 0, 1, 1, 0}, {0, 1, 0, 1, 0, 1, 0, 1, 0, 1}};
  ASSERT_EQ(Load(p, BuildBmp(b1)), 0);
  EXPECT_EQ(p.pixels, (std::vector<uint8_t>{255, 0,   0, 0,   0, 0,   0, 255, 255, 0,
                                            0,   255, 0, 255, 0, 255, 0, 255, 0,   255}));
}

TEST(LoadBitmapFile, HonoursThePixelDataOffset) {
  BmpSpec bmp;
  bmp.width = 1;
  bmp.height = 1;
  bmp.rows = {{0xFFFFFF}};
  bmp.dataOffsetDelta = 3;  // three gap bytes before the pixels
  std::string bytes = BuildBmp(bmp);
  bytes.insert(54, "\x00\x00\x00", 3);
  Picture p;
  ASSERT_EQ(Load(p, bytes), 0);
  EXPECT_EQ(p.At(0, 0), 255);
}

TEST(LoadBitmapFile, RefusesWhatItCannotRead) {
  BmpSpec good;
  good.width = 4;
  good.height = 2;
  good.rows = {{1, 2, 3, 4}, {5, 6, 7, 8}};
  Picture p;
  EXPECT_EQ(p.LoadBitmapFile(nullptr), -1);
  EXPECT_EQ(p.LoadBitmapFile(""), -1);
  EXPECT_EQ(p.LoadBitmapFile("/no/such/file.bmp"), -1);
  EXPECT_EQ(p.LoadBitmapFile(std::filesystem::temp_directory_path().c_str()), -1);  // a folder

  std::string wrongType = BuildBmp(good);
  wrongType[0] = 'X';
  EXPECT_EQ(Load(p, wrongType), -1);

  for (uint16_t bits : {0, 2, 16, 32}) {
    BmpSpec s = good;
    s.bits = bits;
    EXPECT_EQ(Load(p, BuildBmp(s)), -1) << bits;
  }
  BmpSpec compressed = good;
  compressed.compression = 1;  // RLE8
  EXPECT_EQ(Load(p, BuildBmp(compressed)), -1);
  BmpSpec topDown = good;
  topDown.height = -2;
  EXPECT_EQ(Load(p, BuildBmp(topDown)), -1);
  for (int32_t w : {0, -5, 100000}) {
    BmpSpec s = good;
    s.width = w;
    EXPECT_EQ(Load(p, BuildBmp(s)), -1) << w;
  }
  BmpSpec huge = good;  // claims 16384 x 16384 but holds 2 rows: never allocated
  huge.width = 16384;
  huge.height = 16384;
  EXPECT_EQ(Load(p, BuildBmp(huge)), -1);

  const std::string full = BuildBmp(good);
  for (std::size_t cut : {0ul, 13ul, 53ul, full.size() - 1}) {
    EXPECT_EQ(Load(p, full.substr(0, cut)), -1) << cut;
    EXPECT_FALSE(p.HasPixels());
  }
  BmpSpec paletteCut;
  paletteCut.width = 1;
  paletteCut.height = 1;
  paletteCut.bits = 8;
  paletteCut.palette = GreyPalette(256);
  paletteCut.rows = {{1}};
  EXPECT_EQ(Load(p, BuildBmp(paletteCut).substr(0, 54 + 1000)), -1);

  BmpSpec offsetBeyond = good;
  offsetBeyond.dataOffsetDelta = 1 << 30;
  EXPECT_EQ(Load(p, BuildBmp(offsetBeyond)), -1);

  // A failure empties a picture that held pixels.
  ASSERT_EQ(Load(p, full), 0);
  EXPECT_EQ(Load(p, wrongType), -1);
  EXPECT_FALSE(p.HasPixels());
  EXPECT_EQ(p.width, 0);
}

TEST(LoadBitmapFile, BytesInMemoryReadAlike) {
  BmpSpec bmp;
  bmp.width = 2;
  bmp.height = 2;
  bmp.rows = {{0xFFFFFF, 0}, {0, 0xFF0000}};
  const std::string bytes = BuildBmp(bmp);
  Picture p;
  ASSERT_EQ(p.LoadBitmapBytes(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), 0);
  EXPECT_EQ(p.pixels, (std::vector<uint8_t>{255, 0, 0, 76}));
  EXPECT_EQ(p.LoadBitmapBytes(nullptr, 10), -1);
}

TEST(CropToContent, CutsToTheContentRectangle) {
  Picture p(200, 50);
  for (int32_t y = 20; y < 24; ++y)
    for (int32_t x = 100; x < 110; ++x) p.pixels[static_cast<std::size_t>(y * 200 + x)] = 9;
  p.pixels[static_cast<std::size_t>(23 * 200 + 109)] = 200;
  EXPECT_EQ(p.CropToContent(), 0);
  ASSERT_EQ(p.width, 10);
  ASSERT_EQ(p.height, 4);
  EXPECT_EQ(p.At(0, 0), 9);
  EXPECT_EQ(p.At(9, 3), 200);
}

TEST(CropToContent, KeepsAFullPictureAndEmptiesABlankOne) {
  Picture full = FromRows({{1, 0}, {0, 1}});
  full.CropToContent();
  EXPECT_EQ(full.width, 2);
  EXPECT_EQ(full.height, 2);
  Picture blank(30, 7);
  EXPECT_EQ(blank.CropToContent(), 0);
  EXPECT_FALSE(blank.HasPixels());
  EXPECT_EQ(blank.width, 0);
  Picture empty;
  EXPECT_EQ(empty.CropToContent(), 0);
  Picture scattered = FromRows({{0, 0, 0, 0}, {0, 5, 0, 0}, {0, 0, 0, 7}, {0, 0, 0, 0}});
  scattered.CropToContent();
  EXPECT_EQ(scattered.pixels, (std::vector<uint8_t>{5, 0, 0, 0, 0, 7}));
}

TEST(SmoothPixel, LeavesLowContrastAndThreeLevelsAlone) {
  EXPECT_EQ(SmoothPixel({200, 200, 100, 200, 100, 100, 200, 100, 100}), 100);  // < 128 apart
  EXPECT_EQ(SmoothPixel({255, 255, 0, 255, 1, 1, 255, 128, 1}), 1);            // a third level
}

// Pattern 1 as written (centre low, the level above it at left and top): 28 % toward hi.
TEST(SmoothPixel, MovesACornerTowardTheOtherLevel) {
  // 1 1 0 / 1 c 0 / 1 0 0 with 1 = 255, 0 = 1 (the centre is low)
  EXPECT_EQ(SmoothPixel({255, 255, 1, 255, 1, 1, 255, 1, 1}), 1 + (254 * 28 + 50) / 100);
  // The same with the centre high: marks inverted, target low.
  EXPECT_EQ(SmoothPixel({1, 1, 255, 1, 255, 255, 1, 255, 255}), 255 + (-254 * 28 - 50) / 100);
}

std::array<uint8_t, 9> FromMarks(const char* marks) {
  std::array<uint8_t, 9> n{};
  for (int i = 0; i < 9; ++i) n[static_cast<std::size_t>(i)] = marks[i] == '1' ? 250 : 10;
  return n;
}

// The eight orientations of a 3 x 3 pattern in row-order text.
std::vector<std::string> Orientations(const std::string& p) {
  auto at = [&](int r, int c) { return p[static_cast<std::size_t>(r * 3 + c)]; };
  std::vector<std::string> out(8, std::string(9, ' '));
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) {
      const std::size_t i = static_cast<std::size_t>(r * 3 + c);
      out[0][i] = at(r, c);
      out[1][i] = at(r, 2 - c);
      out[2][i] = at(2 - r, c);
      out[3][i] = at(2 - r, 2 - c);
      out[4][i] = at(c, r);
      out[5][i] = at(c, 2 - r);
      out[6][i] = at(2 - c, r);
      out[7][i] = at(2 - c, 2 - r);
    }
  }
  return out;
}

TEST(SmoothPixel, MatchesEveryPatternInAllEightOrientations) {
  // Each pattern with its "any" places set to 0, and the weight it gives.
  const struct {
    const char* marks;
    int weight;
  } patterns[] = {
      {"110100100", 28}, {"111100100", 30}, {"010100000", 15}, {"110100110", 20}, {"111100111", 20},
  };
  for (const auto& pattern : patterns) {
    for (const std::string& o : Orientations(pattern.marks)) {
      const std::array<uint8_t, 9> n = FromMarks(o.c_str());
      // The first pattern in table order that matches decides; pattern 3 with its "any"
      // places 0 is matched by itself first only when no earlier one matches.
      const int expected = 10 + ((250 - 10) * pattern.weight + 50) / 100;
      const int got = SmoothPixel(n);
      if (pattern.weight == 15 || pattern.weight == 28 || pattern.weight == 30) {
        EXPECT_EQ(got, expected) << o;
      } else {
        EXPECT_NE(got, 10) << o;  // patterns 4 and 5 contain pattern 1 or 2
      }
    }
  }
  // No pattern: a straight edge.
  EXPECT_EQ(SmoothPixel(FromMarks("111000000")), 10);
  EXPECT_EQ(SmoothPixel(FromMarks("100100100")), 10);
}

TEST(SmoothPixel, Patterns4And5GiveTwentyPerCent) {
  // Pattern 5 as written: no earlier pattern fits (pattern 2 wants the bottom row 1 0 0).
  EXPECT_EQ(SmoothPixel(FromMarks("111100111")), 10 + (240 * 20 + 50) / 100);
  // Pattern 4 with its "any" place 0: pattern 1 wants a 0 below the centre.
  EXPECT_EQ(SmoothPixel(FromMarks("110100110")), 10 + (240 * 20 + 50) / 100);
  // Pattern 4 turned a quarter: 1 1 1 / 1 c 1 / 0 0 2 read as columns.
  EXPECT_EQ(SmoothPixel(FromMarks("111101001")), 10 + (240 * 20 + 50) / 100);
}

TEST(SmoothPixel, RoundsHalvesAwayFromZero) {
  // hi 255, lo 105 -> c = 105, d = 150 * 15 = 2250 -> +23 (22.5 rounded up)
  EXPECT_EQ(SmoothPixel({105, 255, 105, 255, 105, 105, 105, 105, 105}), 105 + 23);
  // Centre high: d = -2250 -> -23.
  EXPECT_EQ(SmoothPixel({255, 105, 255, 105, 255, 255, 255, 255, 255}), 255 - 23);
}

TEST(SmoothEdges, LeavesBordersZerosAndLowContrastAlone) {
  Picture low = FromRows(
      {{100, 100, 100, 100}, {100, 200, 200, 100}, {100, 200, 200, 100}, {100, 100, 100, 100}});
  const auto before = low.pixels;
  EXPECT_EQ(low.SmoothEdges(), 0);
  EXPECT_EQ(low.pixels, before);

  // A high-contrast staircase: zeros and border pixels never change.
  Picture stairs = FromRows({{255, 255, 255, 255, 255},
                             {255, 255, 0, 0, 0},
                             {255, 0, 0, 0, 0},
                             {255, 0, 0, 0, 0},
                             {255, 255, 255, 255, 255}});
  const auto original = stairs.pixels;
  stairs.SmoothEdges();
  for (int32_t y = 0; y < 5; ++y) {
    for (int32_t x = 0; x < 5; ++x) {
      const std::size_t i = static_cast<std::size_t>(y * 5 + x);
      if (original[i] == 0 || x == 0 || y == 0 || x == 4 || y == 4) {
        EXPECT_EQ(stairs.pixels[i], original[i]) << x << "," << y;
      }
    }
  }
  // The pixel at (1, 1), a corner of the bright level, matches pattern 3 turned half round
  // (marks inverted: 0 0 0 / 0 c 1 / 0 1 1): 15 % of the way toward 0.
  EXPECT_EQ(stairs.At(1, 1), 255 - (255 * 15 + 50) / 100);

  Picture thin = FromRows({{255, 0, 255}, {0, 255, 0}});
  const auto thinBefore = thin.pixels;
  thin.SmoothEdges();
  EXPECT_EQ(thin.pixels, thinBefore);
  Picture empty;
  EXPECT_EQ(empty.SmoothEdges(), 0);
}

TEST(SmoothEdges, NeverMakesAPixelTransparent) {
  // A lone bright pixel on a level of 1: pattern 5 pulls it toward 1 but never to 0.
  Picture p = FromRows({{1, 1, 1}, {1, 255, 1}, {1, 1, 1}});
  p.SmoothEdges();
  EXPECT_GT(p.At(1, 1), 0);
  Picture q = FromRows({{0, 0, 0}, {0, 2, 0}, {0, 0, 0}});
  q.SmoothEdges();
  EXPECT_EQ(q.At(1, 1), 2);  // less than 128 apart
}

TEST(ScaleTo, InterpolatesBetweenTheEndPixels) {
  Picture p = FromRows({{0, 60, 120, 180}});
  ASSERT_EQ(p.ScaleTo(7, 1), 0);
  ASSERT_EQ(p.width, 7);
  // sx = 3x / 6, fx = 3x mod 6: x=1 -> (0*5 + 60*3)/6 = 30
  EXPECT_EQ(p.pixels, (std::vector<uint8_t>{0, 30, 60, 90, 120, 150, 180}));
}

TEST(ScaleTo, UsesBothDirectionsAndTruncates) {
  Picture p = FromRows({{0, 255}, {255, 0}});
  ASSERT_EQ(p.ScaleTo(3, 3), 0);
  // Centre: fx = fy = 1, W = H = 3: ((255*1 + 0*1)*1 + (0*1 + 255*1)*1) / 4 = 127
  EXPECT_EQ(p.pixels, (std::vector<uint8_t>{0, 127, 255, 127, 127, 127, 255, 127, 0}));
  Picture q = FromRows({{10, 20, 30}, {40, 50, 60}});
  ASSERT_EQ(q.ScaleTo(1, 1), 0);
  EXPECT_EQ(q.pixels, (std::vector<uint8_t>{10}));
  Picture r = FromRows({{10}, {20}, {31}});
  ASSERT_EQ(r.ScaleTo(1, 5), 0);
  EXPECT_EQ(r.pixels, (std::vector<uint8_t>{10, 15, 20, 25, 31}));
  Picture down = FromRows({{0, 10, 20, 30, 40}});
  ASSERT_EQ(down.ScaleTo(3, 1), 0);
  EXPECT_EQ(down.pixels, (std::vector<uint8_t>{0, 20, 40}));
}

TEST(ScaleTo, EmptySameAndZeroSizes) {
  Picture empty;
  EXPECT_EQ(empty.ScaleTo(3, 3), -1);
  EXPECT_FALSE(empty.HasPixels());
  Picture same = FromRows({{1, 2}});
  EXPECT_EQ(same.ScaleTo(2, 1), 0);
  EXPECT_EQ(same.pixels, (std::vector<uint8_t>{1, 2}));
  Picture zero = FromRows({{1, 2}});
  EXPECT_EQ(zero.ScaleTo(0, 0), 0);
  EXPECT_FALSE(zero.HasPixels());
  Picture negative = FromRows({{1, 2}});
  EXPECT_EQ(negative.ScaleTo(5, -1), 0);
  EXPECT_FALSE(negative.HasPixels());
  Picture tooLarge = FromRows({{1, 2}});
  EXPECT_EQ(tooLarge.ScaleTo(1 << 20, 2), -1);
  EXPECT_EQ(tooLarge.width, 2);
}

}  // namespace
}  // namespace korvalin
