#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli_runner.h"

namespace korvalin::testing {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kFrames = 10;
constexpr std::size_t kFrameBytes = kWidth * kHeight * 2;  // 4:2:2 planes or YUY2

// A grey 4:2:2 clip at 25 fps: frame i covers [40 i, 40 i + 40] ms.
std::string GreyClip(int frames) {
  std::string clip = "YUV4MPEG2 W320 H240 F25:1 Ip A1:1 C422\n";
  for (int i = 0; i < frames; ++i) {
    clip += "FRAME\n";
    clip += std::string(kWidth * kHeight, '\x80');
    clip += std::string(kWidth * kHeight, '\x80');
  }
  return clip;
}

// On screen from 120 ms to 200 ms: frames 2 to 5 touch that interval.
constexpr const char* kSubRip = "1\n00:00:00,120 --> 00:00:00,200\nHELLO\n\n";
const std::vector<bool> kShownIn = {false, false, true,  true,  true,
                                    true,  false, false, false, false};

class RenderCliTest : public ::testing::Test {
 protected:
  CliResult Render(std::vector<std::string> extra) {
    std::vector<std::string> args = {"render", clip.string(), "--subs", subs.string()};
    args.insert(args.end(), extra.begin(), extra.end());
    return RunCli(args, dir.registry());
  }
  TempDir dir;
  std::filesystem::path clip = dir.Write("clip.y4m", GreyClip(kFrames));
  std::filesystem::path subs = dir.Write("clip.srt", kSubRip);
};

bool HasBrightLuma(const std::string& frame) {
  for (std::size_t i = 0; i < kWidth * kHeight; ++i) {
    if (static_cast<uint8_t>(frame[i]) > 0xC0) return true;
  }
  return false;
}

TEST_F(RenderCliTest, Yuy2FramesCarryTheSubtitleExactlyDuringItsInterval) {
  const auto out = dir.path() / "out.y4m";
  const CliResult result = Render({"-o", out.string()});
  ASSERT_EQ(result.status, 0) << result.err;
  const std::string video = ReadFile(out);
  const std::size_t headerEnd = video.find('\n') + 1;
  EXPECT_EQ(video.substr(0, headerEnd), "YUV4MPEG2 W320 H240 F25:1 Ip A1:1 C422\n");
  ASSERT_EQ(video.size(), headerEnd + kFrames * (6 + kFrameBytes));
  for (int i = 0; i < kFrames; ++i) {
    const std::size_t at = headerEnd + i * (6 + kFrameBytes);
    ASSERT_EQ(video.substr(at, 6), "FRAME\n");
    EXPECT_EQ(HasBrightLuma(video.substr(at + 6, kFrameBytes)), kShownIn[i]) << "frame " << i;
  }
  EXPECT_NE(result.err.find("10 frames"), std::string::npos) << result.err;
}

TEST_F(RenderCliTest, RgbFramesCarryTheSubtitleExactlyDuringItsInterval) {
  for (const std::string format : {"rgb32", "rgb565"}) {
    const auto folder = dir.path() / format;
    const CliResult result = Render({"--format", format, "-o", folder.string()});
    ASSERT_EQ(result.status, 0) << result.err;
    // Frames without the subtitle are the plain grey picture, each the same file.
    const std::string plain = ReadFile(folder / "frame-000001.png");
    ASSERT_FALSE(plain.empty());
    for (int i = 0; i < kFrames; ++i) {
      char name[32];
      std::snprintf(name, sizeof name, "frame-%06d.png", i + 1);
      const std::string frame = ReadFile(folder / name);
      ASSERT_EQ(frame.substr(1, 3), "PNG") << name;
      EXPECT_EQ(frame != plain, kShownIn[i]) << format << " " << name;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "frame-000011.png"));
  }
}

TEST_F(RenderCliTest, WithoutOverlaysA422ClipComesBackByteForByte) {
  std::string varied = "YUV4MPEG2 W320 H240 F25:1 Ip A1:1 C422\n";
  for (int i = 0; i < 3; ++i) {
    varied += "FRAME\n";
    for (std::size_t b = 0; b < kFrameBytes; ++b)
      varied += static_cast<char>(16 + (b * 31 + i) % 220);
  }
  const auto in = dir.Write("varied.y4m", varied);
  const auto out = dir.path() / "out.y4m";
  const CliResult result = RunCli({"render", in.string(), "-o", out.string()}, dir.registry());
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(ReadFile(out) == varied);
}

TEST_F(RenderCliTest, StoredSettingsShapeTheOutput) {
  ASSERT_EQ(RunCli({"settings", "set", "bOverscan=1", "Overscan=8"}, dir.registry()).status, 0);
  const auto out = dir.path() / "out.y4m";
  ASSERT_EQ(Render({"--frames", "1", "-o", out.string()}).status, 0);
  // 8 % of 320 columns: 12 black columns on each side.
  EXPECT_EQ(ReadFile(out).substr(0, 20), "YUV4MPEG2 W344 H240 ");
}

TEST_F(RenderCliTest, FramesOptionStopsEarly) {
  const auto out = dir.path() / "out.y4m";
  ASSERT_EQ(Render({"--frames", "3", "-o", out.string()}).status, 0);
  const std::string video = ReadFile(out);
  EXPECT_EQ(video.size(), video.find('\n') + 1 + 3 * (6 + kFrameBytes));
}

TEST_F(RenderCliTest, ErrorsExitWithStatusTwo) {
  const auto out = (dir.path() / "out.y4m").string();
  const auto damaged = dir.Write("damaged.y4m", GreyClip(2).substr(0, 100000));
  const auto notY4m = dir.Write("not.y4m", "RIFF0000AVI LIST");
  const struct {
    std::vector<std::string> args;
    const char* message;
  } cases[] = {
      {{"render", clip.string()}, "needs -o OUTPUT"},
      {{"render", "-o", out}, "needs an INPUT"},
      {{"render", clip.string(), "-o", out, "--format", "rgb24"}, "--format must be"},
      {{"render", clip.string(), "-o", "-", "--format", "rgb32"}, "into a folder"},
      {{"render", clip.string(), "-o", out, "--frames", "x"}, "--frames must be"},
      {{"render", (dir.path() / "missing.y4m").string(), "-o", out}, "cannot open"},
      {{"render", notY4m.string(), "-o", out}, "not a YUV4MPEG2 stream"},
      {{"render", damaged.string(), "-o", out}, "truncated frame"},
      {{"render", "-", "-o", out}, "empty input"},
      {{"render", clip.string(), "-o", out, "--subs", notY4m.string()},
       "cannot load subtitle file"},
  };
  for (const auto& c : cases) {
    const CliResult result = RunCli(c.args, dir.registry());
    EXPECT_EQ(result.status, 2) << c.message;
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
}

}  // namespace
}  // namespace korvalin::testing
