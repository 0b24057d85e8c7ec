// The tool as a player: registration, the graph the builder makes, the load modes, the
// subtitles found beside the film, and 24 fps films with their sound played at 25 fps.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "cli_runner.h"

namespace korvalin::testing {
namespace {

std::string Clip(int width, int height, const std::string& rate = "25:1", int frames = 1) {
  std::string clip = "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) +
                     " F" + rate + " Ip A1:1 C422\n";
  for (int i = 0; i < frames; ++i) {
    clip += "FRAME\n";
    clip.append(std::size_t(width) * height * 2, '\x80');
  }
  return clip;
}

void PutLe(std::string* bytes, uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes->push_back(static_cast<char>(value >> (8 * i)));
}

// 16-bit stereo PCM at `rate` with `frames` sample frames of a ramp.
std::string Wav(uint32_t rate, uint32_t frames) {
  std::string data;
  for (uint32_t i = 0; i < frames * 2; ++i) PutLe(&data, i * 7, 2);
  std::string wav = "RIFF";
  PutLe(&wav, 36 + static_cast<uint32_t>(data.size()), 4);
  wav += "WAVEfmt ";
  PutLe(&wav, 16, 4);
  PutLe(&wav, 1, 2);
  PutLe(&wav, 2, 2);
  PutLe(&wav, rate, 4);
  PutLe(&wav, rate * 4, 4);
  PutLe(&wav, 4, 2);
  PutLe(&wav, 16, 2);
  wav += "data";
  PutLe(&wav, static_cast<uint32_t>(data.size()), 4);
  return wav + data;
}

std::vector<std::string> FilterLines(const std::string& graph) {
  std::vector<std::string> filters;
  std::size_t at = 0;
  while ((at = graph.find("filter ", at)) != std::string::npos) {
    const std::size_t end = graph.find('\n', at);
    filters.push_back(graph.substr(at + 7, end - at - 7));
    at = end;
  }
  return filters;
}

TEST(PlayerCliTest, RegisterPutsTheModuleInTheStoreAndTheBuilderUsesIt) {
  const TempDir dir;
  const std::string clip = dir.Write("clip.y4m", Clip(720, 576)).string();
  const CliResult registered = dir.Run({"register"});
  ASSERT_EQ(registered.status, 0) << registered.err;
  EXPECT_NE(registered.out.find("\"KorvalinForce\""), std::string::npos) << registered.out;
  EXPECT_NE(ReadFile(dir.registry()).find("InprocServer32"), std::string::npos);
  const CliResult graph = dir.Run({"graph", clip});
  ASSERT_EQ(graph.status, 0) << graph.err;
  EXPECT_EQ(FilterLines(graph.out),
            (std::vector<std::string>{"YUV4MPEG2 Source", "Korvalin", "Frame Writer"}))
      << graph.out;
  ASSERT_EQ(dir.Run({"unregister"}).status, 0);
  EXPECT_EQ(ReadFile(dir.registry()).find("9D2935C7"), std::string::npos);
  dir.ExpectFailures({{"register", (dir.path() / "none.so").string()},
                      {"unregister", clip}},
                     2, "cannot load the module");
}

TEST(PlayerCliTest, LoadModesDecideWhetherTheFilterGoesIn) {
  struct Case {
    int mode, width, height;
    bool present;
  };
  const TempDir dir;
  for (const Case c : {Case{1, 720, 576, false}, Case{2, 640, 480, false},
                       Case{2, 720, 576, true}, Case{0, 640, 480, true}}) {
    ASSERT_EQ(dir.Run({"settings", "set", "LoadMode=" + std::to_string(c.mode)}).status, 0);
    const std::string input = Clip(c.width, c.height);
    const std::string clip = dir.Write("clip.y4m", input).string();
    const CliResult graph = dir.Run({"graph", clip});
    ASSERT_EQ(graph.status, 0) << graph.err;
    EXPECT_EQ(FilterLines(graph.out).size(), c.present ? 3u : 2u) << c.mode << graph.out;
    const std::string out = (dir.path() / "out.y4m").string();
    ASSERT_EQ(dir.Run({"render", clip, "-o", out}).status, 0);
    if (!c.present) {
      EXPECT_EQ(ReadFile(out), input) << c.mode;
    }
  }
}

TEST(PlayerCliTest, SubtitlesBesideTheFilmLoadByThemselves) {
  const TempDir dir;
  const std::string clip = dir.Write("film.y4m", Clip(320, 240, "25:1", 2)).string();
  const std::string plain = (dir.path() / "plain.y4m").string();
  ASSERT_EQ(dir.Run({"render", clip, "-o", plain}).status, 0);
  dir.Write("film.srt", "1\n00:00:00,000 --> 00:00:05,000\nHELLO\n\n");
  const std::string subtitled = (dir.path() / "subtitled.y4m").string();
  const CliResult result = dir.Run({"render", clip, "-o", subtitled});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_NE(ReadFile(subtitled), ReadFile(plain));
  dir.ExpectFailures({{"render", clip, "-o", plain, "--subs", "missing.srt"}}, 2,
                     "Can not load subtitle file!");
}

TEST(PlayerCliTest, FilmsAt24FpsPlayAt25WithTheSoundRaised) {
  const TempDir dir;
  ASSERT_EQ(dir.Run({"settings", "set", "FPSConv=3"}).status, 0);
  const std::string clip = dir.Write("film.y4m", Clip(320, 240, "24:1", 2)).string();
  const std::string input = Wav(48000, 4800);
  const std::string wav = dir.Write("film.wav", input).string();

  const CliResult graph = dir.Run({"graph", clip, "--audio", wav});
  ASSERT_EQ(graph.status, 0) << graph.err;
  const std::vector<std::string> filters = FilterLines(graph.out);
  ASSERT_EQ(filters.size(), 6u) << graph.out;
  EXPECT_EQ(std::vector<std::string>(filters.begin() + 3, filters.end()),
            (std::vector<std::string>{"WAV Source", "Korvalin Audio", "WAV Writer"}));

  const std::string video = (dir.path() / "out.y4m").string();
  const std::string sound = (dir.path() / "out.wav").string();
  const CliResult render =
      dir.Run({"render", clip, "-o", video, "--audio", wav, "--audio-out", sound});
  ASSERT_EQ(render.status, 0) << render.err;
  EXPECT_NE(ReadFile(video).find(" F25:1 "), std::string::npos);
  const std::string output = ReadFile(sound);
  ASSERT_EQ(output.size(), input.size());
  const auto rateOf = [](const std::string& w) {
    return uint32_t(uint8_t(w[24])) | uint32_t(uint8_t(w[25])) << 8 |
           uint32_t(uint8_t(w[26])) << 16 | uint32_t(uint8_t(w[27])) << 24;
  };
  EXPECT_EQ(rateOf(output), 49999u);
  EXPECT_EQ(output.substr(44), input.substr(44));  // the same samples
}

}  // namespace
}  // namespace korvalin::testing
