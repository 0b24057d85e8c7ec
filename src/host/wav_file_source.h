#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "host/graph_interfaces.h"
#include "host/source_filter.h"
#include "host/wav_format.h"

namespace korvalin::host {

inline constexpr CLSID CLSID_WavFileSource = MakeGuid("6B6F7276-0003-4C4E-8000-574156535243");

// A source filter that plays the PCM of a WAV file: one output pin ("Output") sending the
// data chunk in buffers of about 100 ms, stamped with their times. It tells the graph the
// file's name and length.
class WavFileSource : public SourceFilter, public IFileSourceFilter, public IMediaPosition {
 public:
  explicit WavFileSource(std::string path);
  ~WavFileSource() override;

  // Opens the file and reads its header: "" on success, else the error.
  std::string Open();
  // The error that ended the stream early, "" when it ended cleanly.
  std::string StreamError();

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;
  // Opens another file; only while the output is not connected (VFW_E_ALREADY_CONNECTED).
  // E_FAIL when the file cannot be played.
  HRESULT Load(std::u16string_view fileName, const AM_MEDIA_TYPE* type) override;
  HRESULT GetCurFile(std::u16string* fileName, AM_MEDIA_TYPE* type) override;
  // VFW_E_WRONG_STATE before a file was opened.
  HRESULT get_Duration(double* seconds) override;

 private:
  class Stream;
  struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::string path_;
  std::unique_ptr<std::FILE, FileCloser> file_;
  WavLayout layout_;
  Stream* stream_;  // owned by the base, as its only pin
  std::mutex errorLock_;
  std::string streamError_;
};

}  // namespace korvalin::host
