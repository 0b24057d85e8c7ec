#include <cstdio>
#include <optional>
#include <string>

#include "korvalin/commands.h"
#include "korvalin/number_parse.h"
#include "korvalin/player_graph.h"
#include "korvalin/render_outputs.h"
#include "korvalin/render_pipeline.h"

namespace korvalin::cli {

const std::string_view kRenderUsage =
    "  render INPUT -o OUTPUT [--subs FILE] [--lang NAME] [--format yuy2|rgb32|rgb565]\n"
    "         [--frames N] [--audio IN.wav --audio-out OUT.wav]\n"
    "                                   play a YUV4MPEG2 film through a player's graph\n"
    "                                   (- for stdin/stdout); rgb32 and rgb565 write PNG\n"
    "                                   frames into a folder\n";

namespace {

struct RenderRequest {
  std::string input;
  std::string output;
  std::string subtitles;
  std::string language;
  std::string audioInput, audioOutput;
  PixelFormat format = PixelFormat::YUY2;
  int64_t maxFrames = -1;
};

// Fills the request, or returns the message for bad arguments.
std::optional<std::string> ParseArguments(Args args, RenderRequest& request) {
  bool haveInput = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    const bool takesValue = arg == "-o" || arg == "--subs" || arg == "--lang" ||
                            arg == "--audio" || arg == "--audio-out" || arg == "--format" ||
                            arg == "--frames";
    if (takesValue && i + 1 >= args.size()) return "option " + std::string(arg) + " needs a value";
    if (arg == "-o") {
      request.output = std::string(args[++i]);
    } else if (arg == "--subs") {
      request.subtitles = std::string(args[++i]);
    } else if (arg == "--lang") {
      request.language = std::string(args[++i]);
    } else if (arg == "--audio") {
      request.audioInput = std::string(args[++i]);
    } else if (arg == "--audio-out") {
      request.audioOutput = std::string(args[++i]);
    } else if (arg == "--format") {
      const std::optional<PixelFormat> format = ParsePixelFormat(args[++i]);
      if (!format) return "--format must be yuy2, rgb32 or rgb565";
      request.format = *format;
    } else if (arg == "--frames") {
      const std::optional<int64_t> frames = ParseInteger(args[++i], 0, INT64_MAX / 2);
      if (!frames) return "--frames must be a whole number from 0";
      request.maxFrames = *frames;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return "unknown option '" + std::string(arg) + "'";
    } else if (haveInput) {
      return "only one INPUT argument is taken";
    } else {
      request.input = std::string(arg);
      haveInput = true;
    }
  }
  if (!haveInput) return "render needs an INPUT (a YUV4MPEG2 file, or - for stdin)";
  if (request.output.empty()) return "render needs -o OUTPUT";
  if (request.audioInput.empty() != request.audioOutput.empty())
    return "--audio IN.wav and --audio-out OUT.wav go together";
  if (request.format != PixelFormat::YUY2 && request.output == "-")
    return "rgb32 and rgb565 frames are written as PNG files into a folder, not to stdout";
  return {};
}

// Closes a file the command opened, not stdin.
struct InputFile {
  std::FILE* file = nullptr;
  ~InputFile() {
    if (file != nullptr && file != stdin) std::fclose(file);
  }
};

}  // namespace

int RunRenderCommand(Args args) {
  RenderRequest request;
  if (const std::optional<std::string> error = ParseArguments(args, request)) return Fail(*error);

  InputFile input;
  input.file = request.input == "-" ? stdin : std::fopen(request.input.c_str(), "rb");
  if (input.file == nullptr) return Fail("cannot open " + request.input);

  RenderJob job;
  job.input = input.file;
  job.format = request.format;
  job.inputPath = request.input == "-" ? "" : request.input;
  job.subtitles = request.subtitles;
  job.language = request.language;
  job.audioInput = request.audioInput;
  job.audioOutput = request.audioOutput;
  job.maxFrames = request.maxFrames;
  job.progress = request.output != "-";

  Y4mFileOutput y4m(request.output);
  PngFolderOutput pngs(request.output);
  RenderOutput output;
  if (request.format == PixelFormat::YUY2) {
    output.begin = [&](const RenderStart& start) { return y4m.Begin(start); };
    output.frame = [&](const SinkFrame& frame) { return y4m.Write(frame); };
  } else {
    output.begin = [&](const RenderStart&) { return pngs.Begin(); };
    output.frame = [&](const SinkFrame& frame) { return pngs.Write(frame); };
  }
  int64_t frames = 0;
  const std::string error = RunRender(job, output, &frames);
  const bool flushed = y4m.Finish();
  if (!error.empty()) {
    const std::string detail = pngs.error().empty() ? "" : " (" + pngs.error() + ")";
    return Fail(request.input + ": " + error + detail);
  }
  if (!flushed) return Fail("cannot write " + request.output);
  return kExitOk;
}

}  // namespace korvalin::cli
