#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "filter/y4m_stream.h"
#include "host/filter_interfaces.h"
#include "host/source_filter.h"

namespace korvalin {

inline constexpr host::CLSID CLSID_Y4mSource =
    host::MakeGuid("6B6F7276-0001-4C4E-8000-593456534F55");

// A source filter that reads a YUV4MPEG2 stream and sends its frames as YUY2 with times
// from the stream's frame rate. It writes the rows in whichever orientation the
// downstream pin asks for through a type attached to a buffer.
//
// A seekable file tells the graph its length, so the clock can count the time remaining.
//
// Given the name of the file it reads, it answers IFileSourceFilter with it, so filters
// downstream can find what belongs to the film (its subtitles).
class Y4mSource : public host::SourceFilter,
                  public host::IMediaPosition,
                  public host::IFileSourceFilter {
 public:
  // Reads from `file`, which stays the caller's; stops after `maxFrames` (< 0: all).
  // `fileName` is the file's path, "" for a stream without one (a pipe).
  Y4mSource(std::FILE* file, int64_t maxFrames, std::string fileName = {});
  // Reads the stream header and the first frame, so a stream without one fails here: "" on
  // success, else the error.
  std::string Open();
  host::HRESULT NonDelegatingQueryInterface(const host::IID& iid, void** out) override;
  // E_NOTIMPL when the stream cannot tell (a pipe).
  host::HRESULT get_Duration(double* seconds) override;
  // The stream is opened by its owner: Load is refused.
  host::HRESULT Load(std::u16string_view fileName, const host::AM_MEDIA_TYPE* type) override;
  host::HRESULT GetCurFile(std::u16string* fileName, host::AM_MEDIA_TYPE* type) override;
  const Y4mHeader& header() const { return reader_.header(); }
  // The error that ended the stream early, "" when it ended cleanly.
  std::string StreamError();
  int64_t FramesSent();

 private:
  friend class Y4mStream;
  Y4mReader reader_;
  int64_t maxFrames_;
  std::string fileName_;
  int64_t frameCount_ = -1;
  std::mutex stateLock_;
  std::string streamError_;
  int64_t framesSent_ = 0;
};

}  // namespace korvalin
