#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "cli_runner.h"

namespace korvalin::testing {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kFrames = 10;
constexpr std::size_t kFrameBytes = kWidth * kHeight * 2;  // 4:2:2 planes or YUY2
constexpr const char* kHeader = "YUV4MPEG2 W320 H240 F25:1 Ip A1:1 C422\n";

// A 4:2:2 clip at 25 fps (frame i covers [40 i, 40 i + 40] ms), grey unless varied.
std::string Clip(int frames, bool varied = false) {
  std::string clip = kHeader;
  for (int i = 0; i < frames; ++i) {
    clip += "FRAME\n";
    for (std::size_t b = 0; b < kFrameBytes; ++b)
      clip += varied ? static_cast<char>(16 + (b * 31 + i) % 220) : '\x80';
  }
  return clip;
}

// On screen from 120 ms to 200 ms: frames 2 to 5 touch that interval.
const std::vector<bool> kShownIn = {false, false, true,  true,  true,
                                    true,  false, false, false, false};

class RenderCliTest : public ::testing::Test {
 protected:
  CliResult Render(std::vector<std::string> extra) {
    std::vector<std::string> args = {"render", clip.string(), "--subs", subs.string()};
    args.insert(args.end(), extra.begin(), extra.end());
    return dir.Run(args);
  }
  TempDir dir;
  std::filesystem::path clip = dir.Write("clip.y4m", Clip(kFrames));
  std::filesystem::path subs = dir.Write("clip.srt", "1\n00:00:00,120 --> 00:00:00,200\nHELLO\n");
  std::string out = (dir.path() / "out.y4m").string();
};

TEST_F(RenderCliTest, Yuy2FramesCarryTheSubtitleExactlyDuringItsInterval) {
  const CliResult result = Render({"-o", out});
  ASSERT_EQ(result.status, 0) << result.err;
  const std::string video = ReadFile(out);
  const std::size_t headerEnd = video.find('\n') + 1;
  EXPECT_EQ(video.substr(0, headerEnd), kHeader);
  ASSERT_EQ(video.size(), headerEnd + kFrames * (6 + kFrameBytes));
  for (int i = 0; i < kFrames; ++i) {
    const std::size_t at = headerEnd + i * (6 + kFrameBytes);
    ASSERT_EQ(video.substr(at, 6), "FRAME\n");
    const std::string luma = video.substr(at + 6, kWidth * kHeight);
    EXPECT_EQ(std::any_of(luma.begin(), luma.end(),
                          [](char c) { return static_cast<uint8_t>(c) > 0xC0; }),
              kShownIn[i])
        << "frame " << i;
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
  const std::string varied = Clip(3, true);
  const CliResult result = dir.Run({"render", dir.Write("varied.y4m", varied).string(), "-o", out});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(ReadFile(out) == varied);
}

TEST_F(RenderCliTest, StoredSettingsAndFramesOptionShapeTheOutput) {
  ASSERT_EQ(Render({"--frames", "3", "-o", out}).status, 0);
  EXPECT_EQ(ReadFile(out).size(), std::string(kHeader).size() + 3 * (6 + kFrameBytes));
  ASSERT_EQ(dir.Run({"settings", "set", "bOverscan=1", "Overscan=8"}).status, 0);
  ASSERT_EQ(Render({"--frames", "1", "-o", out}).status, 0);
  // 8 % of 320 columns: 12 black columns on each side.
  EXPECT_EQ(ReadFile(out).substr(0, 20), "YUV4MPEG2 W344 H240 ");
}

TEST_F(RenderCliTest, ErrorsExitWithStatusTwo) {
  const auto damaged = dir.Write("damaged.y4m", Clip(2).substr(0, 100000)).string();
  const auto notY4m = dir.Write("not.y4m", "RIFF0000AVI LIST").string();
  const auto headerOnly = dir.Write("header.y4m", "YUV4MPEG2 W8192 H4320 F25:1\n").string();
  const auto huge = dir.Write("huge.y4m", "YUV4MPEG2 W16384 H16384 F25:1\n").string();
  const auto slow =
      dir.Write("slow.y4m", "YUV4MPEG2 W8 H2 F1:1000000\nFRAME\n123456789012345678901234").string();
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"render", clip.string()}, "needs -o OUTPUT"},
      {{"render", "-o", out}, "needs an INPUT"},
      {{"render", clip.string(), "-o", out, "--format", "rgb24"}, "--format must be"},
      {{"render", clip.string(), "-o", "-", "--format", "rgb32"}, "into a folder"},
      {{"render", clip.string(), "-o", out, "--frames", "x"}, "--frames must be"},
      {{"render", (dir.path() / "missing.y4m").string(), "-o", out}, "cannot open"},
      {{"render", notY4m, "-o", out}, "not a YUV4MPEG2 stream"},
      {{"render", damaged, "-o", out}, "truncated frame"},
      {{"render", "-", "-o", out}, "empty input"},
      {{"render", headerOnly, "-o", out}, "the stream holds no frame"},
      {{"render", huge, "-o", out}, "picture too large"},
      {{"render", slow, "-o", out}, "frame rate F1:1000000 out of range"},
      {{"render", clip.string(), "-o", out, "--subs", notY4m}, "Can not load subtitle file!"},
  };
  for (const auto& [args, message] : cases) dir.ExpectFailures({args}, 2, message);
}

// The peak resident memory of the korvalin runs of `run`, in KB, counted in a child process
// of its own so that nothing else run by the test counts.
long PeakMemoryKb(const std::function<void()>& run) {
  int fds[2];
  if (::pipe(fds) != 0) return -1;
  const pid_t pid = ::fork();
  if (pid == 0) {
    run();
    struct rusage usage {};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const bool written = ::write(fds[1], &usage.ru_maxrss, sizeof usage.ru_maxrss) > 0;
    ::_exit(written ? 0 : 1);
  }
  ::close(fds[1]);
  long peak = -1;
  if (pid < 0 || ::read(fds[0], &peak, sizeof peak) != sizeof peak) peak = -1;
  ::close(fds[0]);
  if (pid > 0) ::waitpid(pid, nullptr, 0);
  return peak;
}

TEST_F(RenderCliTest, AHugeHeaderCostsNoMemoryUntilItsFramesArrive) {
  // 8192 x 4320 frames are 70 MB each, and a graph holds several.
  const std::string header = "YUV4MPEG2 W8192 H4320 F25:1\n";
  for (const std::string& bytes : {header, header + "FRAME\n" + std::string(100000, 'x')}) {
    const auto input = dir.Write("huge.y4m", bytes).string();
    const long peak = PeakMemoryKb([&] {
      dir.ExpectFailures({{"render", input, "-o", out}}, 2, "");
    });
    EXPECT_GT(peak, 0);
    EXPECT_LT(peak, 64 * 1024) << bytes.size();
  }
}

TEST(DemoCliTest, WritesClipAndPicture) {
  const TempDir dir;
  const auto folder = dir.path() / "demo";
  const CliResult result = dir.Run({"demo", "-o", folder.string()});
  ASSERT_EQ(result.status, 0) << result.err;
  const std::string video = ReadFile(folder / "demo.y4m");
  const std::string header = "YUV4MPEG2 W720 H576 F25:1 Ip A1:1 C422\n";
  ASSERT_EQ(video.substr(0, header.size()), header);
  EXPECT_EQ(video.size(), header.size() + 250 * (6 + 720 * 576 * 2));
  EXPECT_GT(PngSize(ReadFile(folder / "demo.png")).first, 0u);
  EXPECT_NE(result.out.find("demo.y4m"), std::string::npos);
  EXPECT_NE(result.out.find("demo.png"), std::string::npos);
  dir.ExpectFailures({{"demo", "--fast"}}, 2, "unknown argument");
}

}  // namespace
}  // namespace korvalin::testing
