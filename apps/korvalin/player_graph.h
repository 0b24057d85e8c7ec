#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "filter/frame_sink.h"
#include "filter/y4m_source.h"
#include "host/filter_graph.h"
#include "host/wav_file_writer.h"
#include "settings/settings.h"

namespace korvalin::cli {

// What a player is asked to play: a YUV4MPEG2 film, optionally its sound, and where the
// pictures go.
struct PlayerJob {
  std::FILE* input = nullptr;  // the caller's
  std::string inputPath;       // "" for a pipe: no subtitles are found beside it
  int64_t maxFrames = -1;
  PixelFormat format = PixelFormat::YUY2;
  FrameSink::Consumer frame;  // false: the frame cannot be written
  std::string audioInput;     // a WAV file, "" none
  std::string audioOutput;    // where the sound is written, "" to drop it
  std::optional<Settings> settings;  // the filter's settings instead of the stored ones
};

// A graph built the way a player builds one: the film's source and the renderers, then the
// graph builder renders each source pin and so puts the filters in by merit and load mode.
class PlayerGraph {
 public:
  PlayerGraph();
  ~PlayerGraph();
  PlayerGraph(const PlayerGraph&) = delete;
  PlayerGraph& operator=(const PlayerGraph&) = delete;

  // Builds the graph and lets it choose its clock (which splices in the audio filter when
  // the film plays faster). "" on success, else what went wrong.
  std::string Build(const PlayerJob& job);

  host::FilterGraph* graph() const { return graph_.Get(); }
  Y4mSource* source() const { return source_.Get(); }
  FrameSink* sink() const { return sink_.Get(); }
  // The video filter when the graph took it in, else empty.
  host::ComPtr<host::IBaseFilter> VideoFilter() const;
  // Frames per second of the output as a fraction (the film's own rate unless the filter
  // plays it faster).
  void OutputFrameRate(uint32_t* numerator, uint32_t* denominator) const;
  // The error that ended the sound's stream early, "" when none.
  std::string AudioError() const;

 private:
  std::string AddVideo(const PlayerJob& job);
  std::string AddAudio(const PlayerJob& job);

  host::ComPtr<host::FilterGraph> graph_;
  host::ComPtr<Y4mSource> source_;
  host::ComPtr<FrameSink> sink_;
  host::ComPtr<host::IBaseFilter> audioSource_;
  host::ComPtr<host::WavFileWriter> audioWriter_;
  std::optional<Settings> settings_;
  // Classes this graph put into the process's registry, taken out again when it goes.
  std::vector<host::CLSID> registered_;
};

// "yuy2", "rgb32" or "rgb565" as the pixel format they name; none for anything else.
std::optional<PixelFormat> ParsePixelFormat(std::string_view name);

// "YUY2", "RGB32", "RGB565", "PCM", else the identifier.
std::string SubtypeName(const host::GUID& subtype);

}  // namespace korvalin::cli
