// `korvalin play` as a user runs it without a display: it plays a film with its sound to the
// end, shows the subtitles beside it and reports the frames.
#include <array>
#include <cstdio>

#include "gst_test_support.h"

namespace korvalin::testing {
namespace {

struct Played {
  int status = -1;
  std::string output;
};

Played Play(const std::string& arguments) {
  const std::string command = std::string(KORVALIN_CLI) + " play " + arguments + " 2>&1 </dev/null";
  std::FILE* pipe = popen(command.c_str(), "r");
  Played played;
  std::array<char, 512> chunk;
  while (std::fgets(chunk.data(), chunk.size(), pipe)) played.output += chunk.data();
  played.status = WEXITSTATUS(pclose(pipe));
  return played;
}

class PlayCliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StartGStreamer();
    film_ = store_.path() / "film.mkv";
    GstElement* maker = Launch(
        "videotestsrc num-buffers=12 ! video/x-raw,format=I420,width=160,height=120,"
        "framerate=24/1 ! matroskamux name=mux ! filesink location=" + film_.string() +
        " audiotestsrc num-buffers=12 ! audio/x-raw,rate=48000,channels=2 ! mux.");
    ASSERT_TRUE(RunToEnd(maker));
    gst_object_unref(maker);
    store_.Write("film.srt", "1\n00:00:00,000 --> 00:00:00,400\nBeside\n");
  }
  StoreFolder store_;
  std::filesystem::path film_;
};

TEST_F(PlayCliTest, PlaysToTheEndWithTheSubtitlesBesideTheFilm) {
  for (const char* format : {"", " --format rgb565", " --format rgb32"}) {
    const Played played = Play(film_.string() + " --sink fakesink" + format);
    EXPECT_EQ(played.status, 0) << played.output;
    EXPECT_NE(played.output.find("subtitles: " + (store_.path() / "film.srt").string()),
              std::string::npos) << played.output;
    EXPECT_NE(played.output.find("12 frames"), std::string::npos) << played.output;
  }
}

TEST_F(PlayCliTest, TakesSubtitlesGivenAndRefusesBadArguments) {
  const auto other = store_.Write("other.srt", "1\n00:00:00,000 --> 00:00:00,400\nOther\n");
  const Played chosen = Play(film_.string() + " --sink fakesink --subs " + other.string());
  EXPECT_EQ(chosen.status, 0);
  EXPECT_NE(chosen.output.find("subtitles: " + other.string()), std::string::npos) << chosen.output;

  for (const std::string& bad : {std::string("--format bgr"), std::string(""),
                                 (store_.path() / "missing.mkv").string(),
                                 film_.string() + " --sink"}) {
    const Played refused = Play(bad);
    EXPECT_EQ(refused.status, 2) << bad << ": " << refused.output;
    EXPECT_NE(refused.output.find("korvalin: play:"), std::string::npos) << refused.output;
  }
}

}  // namespace
}  // namespace korvalin::testing
