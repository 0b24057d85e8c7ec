#include <gtest/gtest.h>

#include <string>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

TEST(TextImageCli, ImageSizeFollowsTheTextStyleAndWidth) {
  const TempDir dir;
  const auto png = dir.path() / "out.png";
  const CliResult r = dir.Run({"text-image", "Hello\\nWorld", "-o", png.string()});
  ASSERT_EQ(r.status, 0) << r.err;
  const auto [width, height] = PngSize(ReadFile(png));
  EXPECT_EQ(width % 2, 0u);
  EXPECT_GT(width, 20u);
  EXPECT_EQ(height, 2 * 41 + 2u);  // size 36 at 720 pixels: two cells of 41 and the margin
  ASSERT_EQ(
      dir.Run({"text-image", "12:34", "--style", "osd", "--width", "1280", "-o", png.string()})
          .status,
      0);
  EXPECT_EQ(PngSize(ReadFile(png)).second, 24 * 1280 / 640 + 2u);
}

TEST(TextImageCli, BadArgumentsAreRefused) {
  const TempDir dir;
  const std::string out = (dir.path() / "x.png").string();
  dir.ExpectFailures({{"text-image"},
                      {"text-image", "x"},
                      {"text-image", "x", "--style", "big", "-o", out},
                      {"text-image", "x", "--width", "0", "-o", out},
                      {"text-image", "x", "--width", "wide", "-o", out},
                      {"text-image", "x", "-o"},
                      {"text-image", "x", "y", "-o", out},
                      {"text-image", "x", "--bold", "-o", out}},
                     2, "korvalin: ");
}

}  // namespace
}  // namespace korvalin::testing
