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

// One run of the filter over a YUV4MPEG2 stream: source -> VideoFilter -> sink.
struct RenderJob {
  std::FILE* input = nullptr;  // the caller's
  PixelFormat format = PixelFormat::YUY2;
  std::string subtitles;  // a subtitle file to load, "" none
  int64_t maxFrames = -1;
  bool progress = false;             // frames and frames per second on stderr
  std::optional<Settings> settings;  // else the stored settings
};

// What the output learns before the first frame.
struct RenderStart {
  Y4mHeader input;
  int32_t outputWidth = 0;
  int32_t outputHeight = 0;
};

struct RenderOutput {
  std::function<bool(const RenderStart&)> begin;  // false: the output cannot be opened
  FrameSink::Consumer frame;                      // false: the frame cannot be written
};

// Runs the job to the end of the stream. "" on success, else what went wrong; *frames
// receives the frames written.
std::string RunRender(const RenderJob& job, const RenderOutput& output, int64_t* frames);

}  // namespace korvalin::cli
