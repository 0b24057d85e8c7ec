#include <gtest/gtest.h>

#include <string>

#include "cli_runner.h"

namespace korvalin::testing {
namespace {

TEST(DemoCliTest, WritesClipAndPicture) {
  TempDir dir;
  const auto folder = dir.path() / "demo";
  const CliResult result = RunCli({"demo", "-o", folder.string()}, dir.registry());
  ASSERT_EQ(result.status, 0) << result.err;
  const std::string video = ReadFile(folder / "demo.y4m");
  const std::string header = "YUV4MPEG2 W720 H576 F25:1 Ip A1:1 C422\n";
  ASSERT_EQ(video.substr(0, header.size()), header);
  EXPECT_EQ(video.size(), header.size() + 250 * (6 + 720 * 576 * 2));
  const std::string picture = ReadFile(folder / "demo.png");
  ASSERT_GT(picture.size(), 8u);
  EXPECT_EQ(picture.substr(1, 3), "PNG");
  EXPECT_NE(result.out.find("demo.y4m"), std::string::npos);
  EXPECT_NE(result.out.find("demo.png"), std::string::npos);
}

TEST(DemoCliTest, RefusesUnknownArguments) {
  TempDir dir;
  const CliResult result = RunCli({"demo", "--fast"}, dir.registry());
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("unknown argument"), std::string::npos);
}

}  // namespace
}  // namespace korvalin::testing
