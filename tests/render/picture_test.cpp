#include "render/picture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <tuple>

#include "render/picture_bmp_writer.h"

namespace korvalin {
namespace {

using testing::BmpLayout;
using testing::BuildBmp;
using Pixels = std::vector<uint8_t>;

// Loads bytes from memory and from a file, which reads row by row: both must agree.
int Load(Picture& p, const std::string& bytes) {
  const auto path = std::filesystem::temp_directory_path() / "korvalin-picture-test.bmp";
  std::ofstream(path, std::ios::binary) << bytes;
  Picture fromFile;
  const int fileResult = fromFile.LoadBitmapFile(path.string().c_str());
  std::filesystem::remove(path);
  const int result =
      p.LoadBitmapBytes(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  EXPECT_EQ(fileResult, result);
  EXPECT_EQ(std::tie(fromFile.width, fromFile.height, fromFile.pixels),
            std::tie(p.width, p.height, p.pixels));
  return result;
}

Picture FromRows(int32_t width, const Pixels& pixels) {
  Picture p(width, static_cast<int32_t>(pixels.size()) / width);
  p.pixels = pixels;
  return p;
}

TEST(LoadBitmapFile, ReadsEveryDepthAsLuma) {
  const std::pair<BmpLayout, Pixels> cases[] = {
      {{3, 2, 24, 0, {}, {{0xFFFFFF, 0, 0xFF0000}, {0x00FF00, 0x0000FF, 0x010101}}},
       {255, 0, 76, 150, 29, 1}},  // 0x010101: each share rounds up to 1
      {{3, 2, 8, 0, testing::GreyPalette(256), {{0, 10, 255}, {200, 1, 2}}},
       {0, 10, 255, 200, 1, 2}},
      {{5, 1, 4, 0, testing::GreyPalette(16), {{0, 1, 2, 3, 15}}}, {0, 17, 34, 51, 255}},
      {{10, 1, 1, 0, {{0, 0, 0}, {255, 255, 255}}, {{1, 0, 0, 0, 0, 0, 0, 1, 1, 0}}},
       {255, 0, 0, 0, 0, 0, 0, 255, 255, 0}},
  };
  for (const auto& [bmp, expected] : cases) {
    Picture p;
    ASSERT_EQ(Load(p, BuildBmp(bmp)), 0) << bmp.bits;
    EXPECT_EQ(p.width, bmp.width);
    EXPECT_EQ(p.pixels, expected) << bmp.bits;
  }
  std::string gap = BuildBmp({1, 1, 24, 0, {}, {{0xFFFFFF}}, 3});  // 3 bytes before the pixels
  gap.insert(54, 3, '\0');
  Picture p;
  EXPECT_EQ(Load(p, gap), 0);
  EXPECT_EQ(p.pixels, Pixels{255});
  EXPECT_EQ(p.LoadBitmapFile("/no/such/file.bmp"), -1);
}

TEST(LoadBitmapFile, RefusesWhatItCannotReadAndEmptiesThePicture) {
  const BmpLayout good{4, 2, 24, 0, {}, {{1, 2, 3, 4}, {5, 6, 7, 8}}};
  const std::string full = BuildBmp(good);
  std::vector<std::string> bad = {full.substr(0, 53), full.substr(0, full.size() - 1), "X"};
  BmpLayout s[6] = {good, good, good, good, good, good};
  s[0].compression = 1;
  s[1].height = -2;  // top-down
  s[2].bits = 16;
  s[3].width = 100000;
  s[4].width = s[4].height = 16384;  // far more than the file holds
  s[5].dataOffsetDelta = 1 << 30;
  for (const BmpLayout& b : s) bad.push_back(BuildBmp(b));
  for (std::size_t i = 0; i < bad.size(); ++i) {
    Picture p;
    ASSERT_EQ(Load(p, full), 0);
    EXPECT_EQ(Load(p, bad[i]), -1) << i;
    EXPECT_FALSE(p.HasPixels()) << i;
    EXPECT_EQ(p.width, 0) << i;
  }
}

TEST(CropToContent, CutsToTheContentRectangle) {
  Picture p(200, 50);
  p.pixels[20 * 200 + 101] = 9;
  p.pixels[23 * 200 + 109] = 200;
  EXPECT_EQ(p.CropToContent(), 0);
  EXPECT_EQ(p.width, 9);
  ASSERT_EQ(p.height, 4);
  EXPECT_EQ(p.At(0, 0), 9);
  EXPECT_EQ(p.At(8, 3), 200);
  Picture blank(30, 7);
  EXPECT_EQ(blank.CropToContent(), 0);
  EXPECT_FALSE(blank.HasPixels());
}

TEST(SmoothPixel, MatchesEachPatternInAllEightOrientations) {
  const std::pair<std::string, int> patterns[] = {
      {"110100100", 28}, {"111100100", 30}, {"010100000", 15}};
  for (const auto& [marks, weight] : patterns) {
    for (int o = 0; o < 8; ++o) {  // bit 0 flips rows, bit 1 columns, bit 2 transposes
      std::array<uint8_t, 9> n{};
      for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
          int rr = o & 1 ? 2 - r : r, cc = o & 2 ? 2 - c : c;
          if (o & 4) std::swap(rr, cc);
          n[static_cast<std::size_t>(r * 3 + c)] =
              marks[static_cast<std::size_t>(rr * 3 + cc)] == '1' ? 250 : 10;
        }
      }
      EXPECT_EQ(SmoothPixel(n), 10 + (240 * weight + 50) / 100) << marks << " " << o;
    }
  }
  EXPECT_EQ(SmoothPixel({250, 250, 250, 10, 10, 10, 10, 10, 10}), 10);         // a straight edge
  EXPECT_EQ(SmoothPixel({200, 200, 100, 200, 100, 100, 200, 100, 100}), 100);  // < 128 apart
  EXPECT_EQ(SmoothPixel({255, 255, 0, 255, 1, 1, 255, 128, 1}), 1);            // a third level
}

TEST(SmoothEdges, ChangesOnlyInnerNonZeroPixelsAndNeverToZero) {
  Picture stairs = FromRows(5, {255, 255, 255, 255, 255, 255, 255, 0,   0,   0,   255, 0,  0,
                                0,   0,   255, 0,   0,   0,   0,   255, 255, 255, 255, 255});
  const Pixels before = stairs.pixels;
  EXPECT_EQ(stairs.SmoothEdges(), 0);
  for (std::size_t i = 0; i < 25; ++i) {
    if (before[i] == 0 || i % 5 % 4 == 0 || i / 5 % 4 == 0) {
      EXPECT_EQ(stairs.pixels[i], before[i]) << i;
    }
  }
  EXPECT_EQ(stairs.At(1, 1), 255 - (255 * 15 + 50) / 100);
  Picture lone = FromRows(3, {1, 1, 1, 1, 255, 1, 1, 1, 1});
  lone.SmoothEdges();
  EXPECT_GT(lone.At(1, 1), 0);
}

TEST(ScaleTo, InterpolatesAndTruncates) {
  Picture row = FromRows(4, {0, 60, 120, 180});
  ASSERT_EQ(row.ScaleTo(7, 1), 0);
  EXPECT_EQ(row.pixels, (Pixels{0, 30, 60, 90, 120, 150, 180}));
  Picture square = FromRows(2, {0, 255, 255, 0});
  ASSERT_EQ(square.ScaleTo(3, 3), 0);
  EXPECT_EQ(square.pixels, (Pixels{0, 127, 255, 127, 127, 127, 255, 127, 0}));
  Picture big(101, 41);
  for (std::size_t i = 0; i < big.pixels.size(); ++i) big.pixels[i] = i % 101 + 3 * (i / 101);
  ASSERT_EQ(big.ScaleTo(51, 21), 0);
  ASSERT_EQ(big.height, 21);
  for (int32_t y = 0; y < 21; ++y)
    for (int32_t x = 0; x < 51; ++x) ASSERT_EQ(big.At(x, y), 2 * x + 6 * y) << x << "," << y;
  Picture empty;
  EXPECT_EQ(empty.ScaleTo(3, 3), -1);
  EXPECT_EQ(square.ScaleTo(1 << 20, 2), -1);
  EXPECT_EQ(square.width, 3);
}

// The interpolation as written: each target pixel's source position and remainders, and one
// division per pixel.
Picture ScaledAsWritten(const Picture& p, int64_t W, int64_t H) {
  Picture out(static_cast<int32_t>(W), static_cast<int32_t>(H));
  const auto at = [&p](int64_t i, int64_t j) -> int64_t {
    return p.At(static_cast<int32_t>(i), static_cast<int32_t>(j));
  };
  for (int64_t y = 0; y < H; ++y) {
    for (int64_t x = 0; x < W; ++x) {
      const int64_t sx = W == 1 ? 0 : (p.width - 1) * x / (W - 1);
      const int64_t fx = W == 1 ? 0 : (p.width - 1) * x % (W - 1);
      const int64_t sy = H == 1 ? 0 : (p.height - 1) * y / (H - 1);
      const int64_t fy = H == 1 ? 0 : (p.height - 1) * y % (H - 1);
      int64_t v = at(sx, sy);
      if (fx != 0 && fy != 0) {
        v = ((at(sx + 1, sy) * fx + at(sx, sy) * (W - fx - 1)) * (H - fy - 1) +
             (at(sx + 1, sy + 1) * fx + at(sx, sy + 1) * (W - fx - 1)) * fy) /
            ((W - 1) * (H - 1));
      } else if (fx != 0) {
        v = (at(sx, sy) * (W - fx - 1) + at(sx + 1, sy) * fx) / (W - 1);
      } else if (fy != 0) {
        v = (at(sx, sy) * (H - fy - 1) + at(sx, sy + 1) * fy) / (H - 1);
      }
      out.pixels[static_cast<std::size_t>(y * W + x)] = static_cast<uint8_t>(v);
    }
  }
  return out;
}

TEST(ScaleTo, MatchesTheInterpolationAsWrittenAtAnySize) {
  std::mt19937 random(5);
  for (int round = 0; round < 120; ++round) {
    Picture p(1 + static_cast<int32_t>(random() % 40), 1 + static_cast<int32_t>(random() % 30));
    for (uint8_t& v : p.pixels) v = random() % 3 ? static_cast<uint8_t>(random()) : 255;
    const int32_t w = round == 0 ? 1 : 1 + static_cast<int32_t>(random() % 160);
    const int32_t h = round == 1 ? 1 : 1 + static_cast<int32_t>(random() % 120);
    const Picture expected = ScaledAsWritten(p, w, h);
    ASSERT_EQ(p.ScaleTo(w, h), 0);
    ASSERT_EQ(p.pixels, expected.pixels) << round << ": " << w << " x " << h;
  }
}

}  // namespace
}  // namespace korvalin
