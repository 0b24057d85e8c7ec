#include "host/wav_file_writer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/media_guids.h"

namespace korvalin::host {
namespace {

constexpr int32_t kSilence = -10000;
// Sizes of a header whose file is still growing: "to the end of the file".
constexpr uint32_t kUnknownSize = UINT32_MAX;

bool WriteAll(std::FILE* file, const void* data, std::size_t bytes) {
  return std::fwrite(data, 1, bytes, file) == bytes;
}

std::string SystemError(const char* what) {
  return std::string(what) + ": " + std::strerror(errno);
}

}  // namespace

WavFileWriter::Pin::Pin(WavFileWriter* writer) : RenderedInputPin(writer, u"In"), writer_(writer) {}

HRESULT WavFileWriter::Pin::CheckMediaType(const AM_MEDIA_TYPE& type) {
  WAVEFORMATEX format;
  const bool pcm = type.majortype == MEDIATYPE_Audio && type.subtype == MEDIASUBTYPE_PCM &&
                   type.formattype == FORMAT_WaveFormatEx && ReadFormatBlock(type, &format) &&
                   IsPlainPcm(format);
  return pcm ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT WavFileWriter::Pin::Active() {
  const HRESULT hr = RenderedInputPin::Active();
  return FAILED(hr) ? hr : writer_->Begin(CurrentMediaType());
}

HRESULT WavFileWriter::Pin::Inactive() {
  const HRESULT hr = RenderedInputPin::Inactive();  // frees an upstream waiting for a buffer
  const HRESULT finished = writer_->Finish();
  return FAILED(hr) ? hr : finished;
}

HRESULT WavFileWriter::Pin::Receive(IMediaSample* sample) {
  const HRESULT hr = RenderedInputPin::Receive(sample);
  return hr == S_OK ? writer_->Append(sample, CurrentMediaType()) : hr;
}

WavFileWriter::WavFileWriter(std::string path)
    : BaseFilter(CLSID_WavFileWriter), path_(std::move(path)), pin_(this) {}

WavFileWriter::WavFileWriter(std::FILE* file)
    : BaseFilter(CLSID_WavFileWriter), callerFile_(file), pin_(this) {}

WavFileWriter::~WavFileWriter() {
  Finish();
}

HRESULT WavFileWriter::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IBasicAudio) return GetInterface(static_cast<IBasicAudio*>(this), out);
  return BaseFilter::NonDelegatingQueryInterface(iid, out);
}

BasePin* WavFileWriter::GetPin(int index) {
  return index == 0 ? &pin_ : nullptr;
}

HRESULT WavFileWriter::put_Volume(int32_t volume) {
  if (volume < kSilence || volume > 0) return E_INVALIDARG;
  std::lock_guard lock(filterLock_);
  volume_ = volume;
  return S_OK;
}

HRESULT WavFileWriter::get_Volume(int32_t* volume) {
  if (!volume) return E_POINTER;
  std::lock_guard lock(filterLock_);
  *volume = volume_;
  return S_OK;
}

uint64_t WavFileWriter::BytesWritten() {
  std::lock_guard lock(fileLock_);
  return bytesWritten_;
}

std::string WavFileWriter::Error() {
  std::lock_guard lock(fileLock_);
  return error_;
}

HRESULT WavFileWriter::Fail(std::string error) {
  if (error_.empty()) error_ = std::move(error);
  return E_FAIL;
}

HRESULT WavFileWriter::Begin(const AM_MEDIA_TYPE& type) {
  std::lock_guard lock(fileLock_);
  CloseFile();
  error_.clear();
  bytesWritten_ = 0;
  ReadFormatBlock(type, &format_);
  file_ = callerFile_ ? callerFile_ : std::fopen(path_.c_str(), "wb");
  if (!file_) return Fail(SystemError("cannot create the WAV file"));
  headerAt_ = ftello(file_);
  const auto header = WavHeaderBytes(format_, kUnknownSize);
  if (WriteAll(file_, header.data(), header.size())) return S_OK;
  // A run that fails to start is never stopped: nothing else would close the file.
  const HRESULT hr = Fail(SystemError("write failed"));
  CloseFile();
  return hr;
}

HRESULT WavFileWriter::Append(IMediaSample* sample, const AM_MEDIA_TYPE& type) {
  std::lock_guard lock(fileLock_);
  if (!file_) return VFW_E_WRONG_STATE;
  if (!error_.empty()) return E_FAIL;
  // A WAV file holds one format: a change in mid-stream cannot be written.
  MediaTypePtr attached;
  if (sample->GetMediaType(&attached) == S_OK && attached && !MediaTypesEqual(*attached, type))
    return Fail("the format changed while streaming");
  uint8_t* data = nullptr;
  const int32_t length = sample->GetActualDataLength();
  if (FAILED(sample->GetPointer(&data)) || length < 0) return Fail("unreadable sample");
  if (!WriteAll(file_, data, static_cast<std::size_t>(length)))
    return Fail(SystemError("write failed"));
  bytesWritten_ += static_cast<uint64_t>(length);
  return S_OK;
}

HRESULT WavFileWriter::Finish() {
  std::lock_guard lock(fileLock_);
  if (!file_) return S_OK;
  bool ok = (bytesWritten_ & 1) == 0 || std::fputc(0, file_) != EOF;  // the chunk's pad byte
  if (ok && headerAt_ >= 0) {
    const int64_t end = ftello(file_);
    const auto header = WavHeaderBytes(
        format_, static_cast<uint32_t>(std::min<uint64_t>(bytesWritten_, UINT32_MAX)));
    ok = fseeko(file_, headerAt_, SEEK_SET) == 0 && WriteAll(file_, header.data(), header.size()) &&
         fseeko(file_, end, SEEK_SET) == 0;
  }
  ok = std::fflush(file_) == 0 && ok;
  ok = CloseFile() && ok;
  // An error in mid-stream was reported when it happened.
  if (ok || !error_.empty()) return S_OK;
  return Fail(SystemError("cannot finish the WAV file"));
}

bool WavFileWriter::CloseFile() {
  std::FILE* file = std::exchange(file_, nullptr);
  return !file || file == callerFile_ || std::fclose(file) == 0;
}

}  // namespace korvalin::host
