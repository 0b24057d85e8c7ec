#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "gst/filter_session.h"

namespace korvalin::gst {

// What the filter makes of a film: whether it takes part, the picture it proposes, whether
// it offers RGB, and the speed-up it plays the film at (0: none).
struct FilmDecision {
  bool active = false;
  OutputShape shape;
  bool rgbOffered = false;
  int32_t clockRate = 0;
};

// The film the element is given: its format, its file and its length.
struct Film {
  FilmFormat format;
  std::string fileName;
  double durationSeconds = 0;
};

// The filter as the element runs it. The live session carries the frames; questions about
// other formats (caps queries while a film plays) are answered by a second session, so the
// live one is never disturbed, and remembered. Thread-safe: one lock serialises everything.
class ElementFilter {
 public:
  ElementFilter();
  ~ElementFilter();

  // The decision for `film`, connecting the live session when it is not streaming yet.
  FilmDecision Decide(const Film& film);
  // Connects the live session for `film` with an output of `format`. False when the filter
  // does not take part or refuses the format.
  bool Start(const Film& film, PixelFormat format);
  // The film's file may have changed (a new stream): decisions are taken anew, and the live
  // session is connected anew at the next Start.
  void Forget();
  FrameResult Transform(const FrameIn& in, uint8_t* out, std::size_t outSize);
  void NewSegment(int64_t start);

  // The subtitles asked for by the application ("" file: automatic); applied now when the
  // filter plays, else at its connection. False when the file does not load.
  bool SelectSubtitle(const std::string& file, const std::string& language);
  // What the live filter shows: its file, format, languages and chosen language index.
  struct SubtitleInfo {
    std::string file, format;
    std::vector<std::string> languages;
    int32_t index = -1;
  };
  SubtitleInfo Subtitles();
  host::ComPtr<IFilterSettings> Settings();

 private:
  using Key = std::tuple<int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, std::string>;
  static Key KeyOf(const Film& film);
  FilmDecision Connect(FilterSession& session, const Film& film);
  void ApplyRequestedSubtitle(FilterSession& session);
  SubtitleInfo SubtitlesOf(FilterSession& session);

  std::recursive_mutex lock_;
  std::unique_ptr<FilterSession> live_;
  Key liveKey_;
  bool streaming_ = false;
  std::unique_ptr<FilterSession> probe_;
  std::map<Key, FilmDecision> decisions_;
  bool subtitleRequested_ = false;
  std::string requestedFile_, requestedLanguage_;
};

}  // namespace korvalin::gst
