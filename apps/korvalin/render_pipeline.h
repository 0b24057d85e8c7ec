#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "filter/frame_sink.h"
#include "filter/y4m_stream.h"
#include "settings/settings.h"

namespace korvalin::cli {

// One run of a player's graph over a YUV4MPEG2 film: the graph builder puts the filter in
// when its settings say so, and the pictures go to the output.
struct RenderJob {
  std::FILE* input = nullptr;  // the caller's
  std::string inputPath;       // the film's file, "" for a pipe
  PixelFormat format = PixelFormat::YUY2;
  std::string subtitles;  // a subtitle file to show instead of the one found, "" none
  std::string language;   // the preferred language, "" the stored one
  std::string audioInput, audioOutput;  // WAV files, "" none
  int64_t maxFrames = -1;
  bool progress = false;             // frames and frames per second on stderr
  std::optional<Settings> settings;  // else the stored settings
};

// What the output learns before the first frame.
struct RenderStart {
  Y4mHeader input;
  int32_t outputWidth = 0;
  int32_t outputHeight = 0;
  // The output's frame rate: the film's, or 25 fps when the filter plays it faster.
  uint32_t rateNumerator = 25;
  uint32_t rateDenominator = 1;
};

struct RenderOutput {
  std::function<bool(const RenderStart&)> begin;  // false: the output cannot be opened
  FrameSink::Consumer frame;                      // false: the frame cannot be written
};

// The message for a subtitle file that does not load.
inline constexpr const char* kCannotLoadSubtitles = "Can not load subtitle file!";

// Runs the job to the end of the stream. "" on success, else what went wrong; *frames
// receives the frames written.
std::string RunRender(const RenderJob& job, const RenderOutput& output, int64_t* frames);

}  // namespace korvalin::cli
