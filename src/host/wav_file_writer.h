#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

#include "host/base_filter.h"
#include "host/input_pin.h"
#include "host/wav_format.h"

namespace korvalin::host {

inline constexpr CLSID CLSID_WavFileWriter = MakeGuid("6B6F7276-0004-4C4E-8000-574156575254");

// An audio renderer that writes the PCM it receives into a WAV file, every byte as it came.
// Each run (stopped to paused) starts the file afresh with a header from the input's
// connection type at that moment, so a format changed by a filter spliced in meanwhile is
// the one written; stopping patches the header's sizes. Being an audio renderer, it answers
// IBasicAudio: the volume is kept, not applied to the bytes.
class WavFileWriter : public BaseFilter, public IBasicAudio {
 public:
  // Writes to the file at `path`, created or truncated at each run.
  explicit WavFileWriter(std::string path);
  // Writes to `file` from where it stands at each run; the file stays the caller's. Sizes
  // are patched only when it can seek (a pipe keeps sizes meaning "to the end").
  explicit WavFileWriter(std::FILE* file);
  ~WavFileWriter() override;

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;
  int GetPinCount() override { return 1; }
  BasePin* GetPin(int index) override;

  // IBasicAudio: hundredths of a decibel, -10000 (silence) to 0; E_INVALIDARG outside.
  HRESULT put_Volume(int32_t volume) override;
  HRESULT get_Volume(int32_t* volume) override;

  // Sound bytes written in the current or last run.
  uint64_t BytesWritten();
  // The error that ended writing, "" when there was none.
  std::string Error();

 private:
  class Pin : public RenderedInputPin {
   public:
    explicit Pin(WavFileWriter* writer);
    HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override;
    HRESULT Active() override;
    HRESULT Inactive() override;
    HRESULT Receive(IMediaSample* sample) override;

   private:
    WavFileWriter* writer_;
  };

  HRESULT Begin(const AM_MEDIA_TYPE& type);
  HRESULT Append(IMediaSample* sample, const AM_MEDIA_TYPE& type);
  HRESULT Finish();
  // Closes a file of our own; the caller's stays open. Under fileLock_.
  bool CloseFile();
  // Records the first error and gives the failure to report; under fileLock_.
  HRESULT Fail(std::string error);

  std::string path_;
  std::FILE* callerFile_ = nullptr;
  Pin pin_;
  int32_t volume_ = 0;

  std::mutex fileLock_;  // the file between the streaming thread and stopping
  std::FILE* file_ = nullptr;
  WAVEFORMATEX format_;
  int64_t headerAt_ = -1;  // where the header starts; -1 when the file cannot seek
  uint64_t bytesWritten_ = 0;
  std::string error_;
};

}  // namespace korvalin::host
