#include <gtest/gtest.h>

#include <string>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

// Width and height from a PNG's header, or {0, 0} when the bytes are no PNG.
std::pair<uint32_t, uint32_t> PngSize(const std::string& bytes) {
  if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) return {0, 0};
  const auto be32 = [&](size_t at) {
    uint32_t v = 0;
    for (size_t i = 0; i < 4; ++i) v = v << 8 | static_cast<uint8_t>(bytes[at + i]);
    return v;
  };
  return {be32(16), be32(20)};
}

TEST(TextImageCli, WritesTheImageOfATwoLineText) {
  const TempDir dir;
  const auto png = dir.path() / "hello.png";
  const CliResult r = RunCli({"text-image", "Hello\\nWorld", "-o", png.string()}, dir.registry());
  ASSERT_EQ(r.status, 0) << r.err;
  const auto [width, height] = PngSize(ReadFile(png));
  EXPECT_EQ(width % 2, 0u);
  EXPECT_GT(width, 20u);
  EXPECT_EQ(height, 2 * 41 + 2u);  // size 36 at 720 pixels: two cells of 41 and the margin
}

TEST(TextImageCli, ClockStyleAndWidthFollowTheOptions) {
  const TempDir dir;
  const auto png = dir.path() / "clock.png";
  ASSERT_EQ(RunCli({"text-image", "12:34", "--style", "osd", "--width", "1280", "-o", png.string()},
                   dir.registry())
                .status,
            0);
  EXPECT_EQ(PngSize(ReadFile(png)).second, 24 * 1280 / 640 + 2u);
}

TEST(TextImageCli, BadArgumentsAreRefused) {
  const TempDir dir;
  const std::string out = (dir.path() / "x.png").string();
  const std::vector<std::vector<std::string>> cases = {
      {"text-image"},
      {"text-image", "x"},
      {"text-image", "x", "--style", "big", "-o", out},
      {"text-image", "x", "--width", "0", "-o", out},
      {"text-image", "x", "--width", "wide", "-o", out},
      {"text-image", "x", "-o"},
      {"text-image", "x", "y", "-o", out},
      {"text-image", "x", "--bold", "-o", out},
  };
  for (const auto& args : cases) {
    const CliResult r = RunCli(args, dir.registry());
    EXPECT_EQ(r.status, 2) << args.size();
    EXPECT_NE(r.err.find("korvalin: "), std::string::npos);
  }
}

}  // namespace
}  // namespace korvalin::testing
