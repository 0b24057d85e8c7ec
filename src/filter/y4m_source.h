#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "filter/y4m_stream.h"
#include "host/source_filter.h"

namespace korvalin {

inline constexpr host::CLSID CLSID_Y4mSource =
    host::MakeGuid("6B6F7276-0001-4C4E-8000-593456534F55");

// A source filter that reads a YUV4MPEG2 stream and sends its frames as YUY2 with times
// from the stream's frame rate. It writes the rows in whichever orientation the
// downstream pin asks for through a type attached to a buffer.
class Y4mSource : public host::SourceFilter {
 public:
  // Reads from `file`, which stays the caller's; stops after `maxFrames` (< 0: all).
  Y4mSource(std::FILE* file, int64_t maxFrames);
  // Reads the stream header: "" on success, else the error.
  std::string Open();
  const Y4mHeader& header() const { return reader_.header(); }
  // The error that ended the stream early, "" when it ended cleanly.
  std::string StreamError();
  int64_t FramesSent();

 private:
  friend class Y4mStream;
  Y4mReader reader_;
  int64_t maxFrames_;
  std::mutex stateLock_;
  std::string streamError_;
  int64_t framesSent_ = 0;
};

}  // namespace korvalin
