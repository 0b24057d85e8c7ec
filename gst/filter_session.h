#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "filter/frame_sink.h"
#include "filter/video_filter.h"
#include "gst/film_source.h"
#include "host/filter_graph.h"
#include "host/media_sample.h"

namespace korvalin::gst {

// The framed picture the filter proposes for a film.
struct OutputShape {
  int32_t width = 0;
  int32_t height = 0;
  int32_t pixelAspectNumerator = 1;
  int32_t pixelAspectDenominator = 1;
};

// One frame handed to the filter: packed top-down rows, and its place in the stream.
struct FrameIn {
  const uint8_t* pixels = nullptr;
  std::size_t size = 0;
  bool timed = false;
  int64_t start = 0;  // 100-ns units from the segment's start
  int64_t stop = 0;
  bool syncPoint = true;
  bool discontinuity = false;
};

enum class FrameResult { kWritten, kUntouched, kDropped };

// A small host graph that carries one VideoFilter, so the filter lives exactly as it does in
// any graph: a FilmSource stands for the player's decoder, a FrameSink for its renderer.
// The element hands frames to the filter's Transform directly, in buffers of its own.
//
// Not thread-safe: the element serialises every call.
class FilterSession {
 public:
  // `probe`: the session only answers what the filter makes of formats; its filter never
  // shows on the desktop.
  explicit FilterSession(bool probe = false);
  ~FilterSession();
  FilterSession(const FilterSession&) = delete;
  FilterSession& operator=(const FilterSession&) = delete;

  // Connects the film to the filter, which then finds the film's subtitles and decides by
  // its load mode whether it takes part. False when it does not (or refuses the format):
  // the element then lets the frames pass untouched.
  bool Connect(const FilmFormat& film, const std::string& fileName, double durationSeconds);
  bool Connected() const { return connected_; }
  // The picture the connected filter proposes.
  OutputShape Output();
  // Connects the filter's output to a renderer of `format`: false when the filter does not
  // offer it (RGB while "Enable extended overlay" is on).
  bool SelectOutput(PixelFormat format);
  // Frames one picture into `out` (packed top-down rows of the selected format).
  FrameResult Transform(const FrameIn& in, uint8_t* out, std::size_t outSize);
  // A new segment: `start` is the stream time of its first sample, in 100-ns units.
  void NewSegment(int64_t start);
  // The source frame duration the filter plays as 40 ms, 0 for real time.
  int32_t ClockRate();
  // The filter's settings interface (reachable while it is in the graph), else null.
  IFilterSettings* Settings();
  VideoFilter* Filter() const { return filter_.Get(); }

 private:
  void DisconnectAll();

  host::ComPtr<host::FilterGraph> graph_;
  host::ComPtr<FilmSource> source_;
  host::ComPtr<VideoFilter> filter_;
  host::ComPtr<FrameSink> sink_;
  FilmFormat film_;
  bool inGraph_ = false;
  bool connected_ = false;
  bool outputSelected_ = false;
  PixelFormat outputFormat_ = PixelFormat::YUY2;
  // The next frame tells the filter that the renderer takes rows top-down.
  bool announceTopDown_ = false;
  host::MediaSample inSample_{nullptr, nullptr, 0};
  host::MediaSample outSample_{nullptr, nullptr, 0};
};

}  // namespace korvalin::gst
