#include "host/wav_file_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "host/mem_allocator.h"
#include "host/wide_text.h"

namespace korvalin::host {
namespace {

// The header, with whatever chunks precede the data, must lie within this many bytes.
constexpr uint64_t kHeadLimit = uint64_t{1} << 20;
constexpr int32_t kBuffers = 4;
constexpr REFERENCE_TIME kUnitsPerSecond = 10'000'000;

// About 100 ms of sound, in whole sample frames.
uint32_t BufferBytes(const WAVEFORMATEX& format) {
  const uint32_t frames = std::max<uint32_t>(format.nSamplesPerSec / 10, 1);
  return frames * format.nBlockAlign;
}

REFERENCE_TIME FrameTime(uint64_t frames, uint32_t samplesPerSec) {
  return static_cast<REFERENCE_TIME>(frames * kUnitsPerSecond / samplesPerSec);
}

std::string SystemError(const char* what) {
  return std::string(what) + ": " + std::strerror(errno);
}

}  // namespace

class WavFileSource::Stream : public SourceStream {
 public:
  explicit Stream(WavFileSource* source) : SourceStream(source, u"Output"), source_(source) {}

  HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
    if (!source_->file_) return VFW_E_TYPE_NOT_ACCEPTED;
    return MediaTypesEqual(type, PcmMediaType(Format())) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override {
    if (position < 0) return E_INVALIDARG;
    if (position > 0 || !source_->file_) return VFW_S_NO_MORE_ITEMS;
    *type = PcmMediaType(Format());
    return S_OK;
  }
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
    request->cBuffers = std::max(request->cBuffers, kBuffers);
    request->cbBuffer = static_cast<int32_t>(BufferBytes(Format()));
    return SetBuffersAtLeast(allocator, *request);
  }
  HRESULT OnThreadStartPlay() override {
    framesSent_ = 0;
    const WavLayout& layout = source_->layout_;
    if (fseeko(source_->file_.get(), static_cast<off_t>(layout.dataOffset), SEEK_SET) != 0) {
      return Fail(SystemError("cannot seek to the sound"));
    }
    const uint64_t frames = layout.dataBytes / Format().nBlockAlign;
    return DeliverNewSegment(0, FrameTime(frames, Format().nSamplesPerSec), 1.0);
  }
  HRESULT FillBuffer(IMediaSample* sample) override {
    const uint32_t block = Format().nBlockAlign;
    const uint64_t left = source_->layout_.dataBytes - framesSent_ * block;
    if (left == 0) return S_FALSE;
    uint8_t* data = nullptr;
    if (FAILED(sample->GetPointer(&data))) return E_FAIL;
    const uint64_t room = static_cast<uint64_t>(sample->GetSize()) / block * block;
    const std::size_t bytes = static_cast<std::size_t>(std::min(left, room));
    if (bytes == 0) return E_FAIL;
    if (std::fread(data, 1, bytes, source_->file_.get()) != bytes) {
      return Fail("the file ended before its sound did");
    }
    sample->SetActualDataLength(static_cast<int32_t>(bytes));
    REFERENCE_TIME start = FrameTime(framesSent_, Format().nSamplesPerSec);
    framesSent_ += bytes / block;
    REFERENCE_TIME stop = FrameTime(framesSent_, Format().nSamplesPerSec);
    sample->SetTime(&start, &stop);
    sample->SetSyncPoint(true);
    return S_OK;
  }

 private:
  const WAVEFORMATEX& Format() const { return source_->layout_.format; }
  HRESULT Fail(std::string error) {
    std::lock_guard lock(source_->errorLock_);
    source_->streamError_ = std::move(error);
    return E_FAIL;
  }

  WavFileSource* source_;
  uint64_t framesSent_ = 0;
};

WavFileSource::WavFileSource(std::string path)
    : SourceFilter(CLSID_WavFileSource), path_(std::move(path)) {
  auto stream = std::make_unique<Stream>(this);
  stream_ = stream.get();
  AddStream(std::move(stream));
}

WavFileSource::~WavFileSource() = default;

std::string WavFileSource::Open() {
  file_.reset();
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path_.c_str(), "rb"));
  if (!file) return SystemError("cannot open");
  if (fseeko(file.get(), 0, SEEK_END) != 0) return SystemError("cannot seek");
  const off_t size = ftello(file.get());
  if (size < 0) return SystemError("cannot seek");
  std::rewind(file.get());
  std::vector<uint8_t> head(std::min(static_cast<uint64_t>(size), kHeadLimit));
  if (std::fread(head.data(), 1, head.size(), file.get()) != head.size()) {
    return "cannot read the header";
  }
  WavParse parse = ParseWavHeader(head, static_cast<uint64_t>(size));
  if (!parse.error.empty()) return parse.error;
  layout_ = parse.layout;
  file_ = std::move(file);
  return "";
}

std::string WavFileSource::StreamError() {
  std::lock_guard lock(errorLock_);
  return streamError_;
}

HRESULT WavFileSource::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IFileSourceFilter)
    return GetInterface(static_cast<IFileSourceFilter*>(this), out);
  if (out && iid == IID_IMediaPosition)
    return GetInterface(static_cast<IMediaPosition*>(this), out);
  return SourceFilter::NonDelegatingQueryInterface(iid, out);
}

HRESULT WavFileSource::Load(std::u16string_view fileName, const AM_MEDIA_TYPE* /*type*/) {
  std::lock_guard lock(filterLock_);
  if (stream_->IsConnected()) return VFW_E_ALREADY_CONNECTED;
  path_ = Narrow(fileName);
  return Open().empty() ? S_OK : E_FAIL;
}

HRESULT WavFileSource::GetCurFile(std::u16string* fileName, AM_MEDIA_TYPE* type) {
  if (!fileName) return E_POINTER;
  std::lock_guard lock(filterLock_);
  *fileName = Widen(path_);
  if (type) *type = file_ ? PcmMediaType(layout_.format) : AM_MEDIA_TYPE{};
  return S_OK;
}

HRESULT WavFileSource::get_Duration(double* seconds) {
  if (!seconds) return E_POINTER;
  if (!file_) return VFW_E_WRONG_STATE;
  const uint64_t frames = layout_.dataBytes / layout_.format.nBlockAlign;
  *seconds = static_cast<double>(frames) / layout_.format.nSamplesPerSec;
  return S_OK;
}

}  // namespace korvalin::host
