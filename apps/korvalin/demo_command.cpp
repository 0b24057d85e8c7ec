#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>

#include "korvalin/commands.h"
#include "korvalin/demo_clip.h"
#include "korvalin/png_writer.h"
#include "korvalin/render_outputs.h"
#include "korvalin/render_pipeline.h"

namespace korvalin::cli {

const std::string_view kDemoUsage =
    "  demo [-o DIR]                    render a built-in clip with subtitles and the\n"
    "                                   clock to DIR/demo.y4m and DIR/demo.png\n"
    "                                   (DIR: ./korvalin-demo)\n";

namespace {

constexpr int32_t kDemoSeconds = 10;
constexpr int64_t kPictureFrame = 2 * kDemoFps;  // 2 s in: the first subtitle and the clock

constexpr const char* kDemoSubRip =
    "1\n00:00:01,000 --> 00:00:04,000\nKorvalin frames the picture for your TV\n"
    "and draws subtitles over it.\n\n"
    "2\n00:00:04,500 --> 00:00:07,000\nThe clock shows the video time\nand the time of day.\n\n"
    "3\n00:00:07,500 --> 00:00:09,500\nTry: korvalin render clip.y4m --subs clip.srt -o "
    "out.y4m\n\n";

std::optional<std::string> ParseArguments(Args args, std::filesystem::path* folder) {
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "-o") {
      if (i + 1 >= args.size()) return "option -o needs a value";
      *folder = std::string(args[++i]);
    } else {
      return "unknown argument '" + std::string(args[i]) + "'";
    }
  }
  return {};
}

// The built-in subtitles as a file, for as long as the demo runs.
class DemoSubtitles {
 public:
  DemoSubtitles()
      : path_(std::filesystem::temp_directory_path() /
              ("korvalin-demo-" + std::to_string(getpid()) + ".srt")) {
    std::ofstream(path_, std::ios::binary) << kDemoSubRip;
  }
  ~DemoSubtitles() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

// The clip comes from a thread through a pipe, so no frame waits in memory or on disk.
class ClipPipe {
 public:
  bool Open() {
    int fds[2];
    if (pipe(fds) != 0) return false;
    reader_ = fdopen(fds[0], "rb");
    std::FILE* writer = fdopen(fds[1], "wb");
    if (reader_ == nullptr || writer == nullptr) return false;
    thread_ = std::thread([writer] {
      WriteDemoClip(writer, kDemoSeconds * kDemoFps);
      std::fclose(writer);
    });
    return true;
  }
  std::FILE* reader() const { return reader_; }
  // Closing the reader first ends a writer still blocked on a full pipe.
  ~ClipPipe() {
    if (reader_ != nullptr) std::fclose(reader_);
    if (thread_.joinable()) thread_.join();
  }

 private:
  std::FILE* reader_ = nullptr;
  std::thread thread_;
};

Settings DemoSettings() {
  Settings settings{Settings::DefaultsOnly{}};
  settings.OSD.OSDVideoTime = 1;
  settings.OSD.OSDWorldTime = 1;
  return settings;
}

}  // namespace

int RunDemoCommand(Args args) {
  std::filesystem::path folder = "korvalin-demo";
  if (const std::optional<std::string> error = ParseArguments(args, &folder)) return Fail(*error);
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error || !std::filesystem::is_directory(folder))
    return Fail("cannot make the folder " + folder.string());
  std::signal(SIGPIPE, SIG_IGN);  // a failed write reports itself

  const DemoSubtitles subtitles;
  ClipPipe clip;
  if (!clip.Open()) return Fail("cannot start the demo clip");

  RenderJob job;
  job.input = clip.reader();
  job.subtitles = subtitles.path();
  job.settings = DemoSettings();
  const std::filesystem::path video = folder / "demo.y4m";
  const std::filesystem::path picture = folder / "demo.png";
  Y4mFileOutput y4m(video.string());
  std::string pictureError = "no frame reached the picture";
  int64_t index = 0;
  RenderOutput output;
  output.begin = [&](const RenderStart& start) { return y4m.Begin(start); };
  output.frame = [&](const SinkFrame& frame) {
    if (index++ == kPictureFrame) {
      pictureError = WritePng(picture.string(), frame.width, frame.height, PngLayout::Rgba,
                              FrameToRgba(frame));
    }
    return y4m.Write(frame);
  };
  int64_t frames = 0;
  const std::string failure = RunRender(job, output, &frames);
  if (!failure.empty()) return Fail("demo: " + failure);
  if (!y4m.Finish()) return Fail("cannot write " + video.string());
  if (!pictureError.empty()) return Fail(pictureError);
  std::printf("wrote %s (%lld frames of %dx%d at %d fps, subtitles and clock drawn in)\n",
              video.string().c_str(), static_cast<long long>(frames), kDemoWidth, kDemoHeight,
              kDemoFps);
  std::printf("wrote %s (the frame at 2 s: a subtitle and the clock)\n", picture.string().c_str());
  return kExitOk;
}

}  // namespace korvalin::cli
