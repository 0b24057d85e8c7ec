#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "filter/frame_sink.h"
#include "filter/y4m_stream.h"
#include "korvalin/render_pipeline.h"

namespace korvalin::cli {

// RGBA bytes (red, green, blue, 255) of a frame in any of the sink's formats.
std::vector<uint8_t> FrameToRgba(const SinkFrame& frame);

// YUY2 frames into a YUV4MPEG2 4:2:2 file, or stdout for "-".
class Y4mFileOutput {
 public:
  explicit Y4mFileOutput(std::string path) : path_(std::move(path)) {}
  ~Y4mFileOutput();
  bool Begin(const RenderStart& start);
  bool Write(const SinkFrame& frame);
  // Flushes and closes; false when anything could not be written.
  bool Finish();

 private:
  std::string path_;
  std::FILE* file_ = nullptr;
  std::unique_ptr<Y4mWriter> writer_;
};

// RGB frames as numbered PNG files in a folder: frame-000001.png, ...
class PngFolderOutput {
 public:
  explicit PngFolderOutput(std::filesystem::path folder) : folder_(std::move(folder)) {}
  bool Begin();
  bool Write(const SinkFrame& frame);
  const std::string& error() const { return error_; }

 private:
  std::filesystem::path folder_;
  int64_t next_ = 1;
  std::string error_;
};

}  // namespace korvalin::cli
