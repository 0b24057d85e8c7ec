#include "filter/y4m_source.h"

#include <cstdlib>
#include <cstring>

#include "filter/video_format_conversion.h"
#include "filter/yuy2_media_type.h"
#include "host/mem_allocator.h"
#include "host/media_guids.h"
#include "host/wide_text.h"
#include "video/frame_row.h"

namespace korvalin {

using namespace host;

class Y4mStream : public SourceStream {
 public:
  explicit Y4mStream(Y4mSource* source) : SourceStream(source, u"Out"), source_(source) {}

  HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
    const VideoFormat format = ToVideoFormat(type);
    const Y4mHeader& header = source_->header();
    const bool same = type.subtype == MEDIASUBTYPE_YUY2 && format.biBitCount == 16 &&
                      format.biWidth == header.width && std::abs(format.biHeight) == header.height;
    return same ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override {
    if (position < 0) return E_INVALIDARG;
    if (position > 0) return VFW_S_NO_MORE_ITEMS;
    const Y4mHeader& header = source_->header();
    *type = Yuy2VideoType(header.width, header.height, header.FrameDuration());
    return S_OK;
  }
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
    request->cBuffers = 2;
    request->cbBuffer = static_cast<int32_t>(source_->header().Yuy2FrameSize());
    return SetBuffersAtLeast(allocator, *request);
  }
  HRESULT OnThreadStartPlay() override {
    next_ = 0;
    return DeliverNewSegment(0, INT64_MAX, 1.0);
  }
  HRESULT FillBuffer(IMediaSample* sample) override {
    if (source_->maxFrames_ >= 0 && next_ >= source_->maxFrames_) return S_FALSE;
    const int read = source_->reader_.ReadFrame(&frame_);
    if (read == 0) return S_FALSE;
    if (read < 0) {
      std::lock_guard lock(source_->stateLock_);
      source_->streamError_ = source_->reader_.error();
      return E_FAIL;
    }
    AdoptAttachedType(sample);
    if (!CopyRows(sample)) return E_FAIL;
    REFERENCE_TIME start = source_->header().FrameStart(next_);
    REFERENCE_TIME stop = source_->header().FrameStart(next_ + 1);
    sample->SetTime(&start, &stop);
    sample->SetSyncPoint(true);
    ++next_;
    std::lock_guard lock(source_->stateLock_);
    source_->framesSent_ = next_;
    return S_OK;
  }

 private:
  // A type attached by the downstream allocator (top-down rows, say) is taken and left on
  // the sample, which tells the downstream filter that it was followed.
  void AdoptAttachedType(IMediaSample* sample) {
    MediaTypePtr type;
    if (sample->GetMediaType(&type) == S_OK && type && CheckMediaType(*type) == S_OK) mt_ = *type;
  }
  bool CopyRows(IMediaSample* sample) {
    uint8_t* data = nullptr;
    const std::size_t size = frame_.size();
    if (FAILED(sample->GetPointer(&data)) || sample->GetSize() < static_cast<int32_t>(size))
      return false;
    const VideoFormat format = ToVideoFormat(mt_);
    const std::size_t stride = std::size_t(source_->header().width) * 2;
    for (int32_t row = 0; row < source_->header().height; ++row) {
      uint8_t* target = FrameRow(data, row, format, false);
      if (target != nullptr) std::memcpy(target, frame_.data() + row * stride, stride);
    }
    sample->SetActualDataLength(static_cast<int32_t>(size));
    return true;
  }

  Y4mSource* source_;
  int64_t next_ = 0;
  std::vector<uint8_t> frame_;
};

Y4mSource::Y4mSource(std::FILE* file, int64_t maxFrames, std::string fileName)
    : SourceFilter(CLSID_Y4mSource),
      reader_(file),
      maxFrames_(maxFrames),
      fileName_(std::move(fileName)) {
  AddStream(std::make_unique<Y4mStream>(this));
}

// The first frame is read here: the graph sets up buffers of the header's frame size when it
// is built, which only a stream that really holds a frame is worth.
std::string Y4mSource::Open() {
  const std::string error = reader_.ReadHeader();
  if (!error.empty()) return error;
  frameCount_ = reader_.CountFrames();
  const int first = reader_.ReadAhead();
  if (first == 0) return "the stream holds no frame";
  return first < 0 ? reader_.error() : "";
}

HRESULT Y4mSource::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IMediaPosition)
    return GetInterface(static_cast<IMediaPosition*>(this), out);
  if (out && iid == IID_IFileSourceFilter && !fileName_.empty())
    return GetInterface(static_cast<IFileSourceFilter*>(this), out);
  return SourceFilter::NonDelegatingQueryInterface(iid, out);
}

HRESULT Y4mSource::get_Duration(double* seconds) {
  if (seconds == nullptr) return E_POINTER;
  int64_t frames = frameCount_;
  if (maxFrames_ >= 0 && (frames < 0 || maxFrames_ < frames)) frames = maxFrames_;
  if (frames < 0) return E_NOTIMPL;
  *seconds = static_cast<double>(reader_.header().FrameStart(frames)) / 1e7;
  return S_OK;
}

std::string Y4mSource::StreamError() {
  std::lock_guard lock(stateLock_);
  return streamError_;
}

int64_t Y4mSource::FramesSent() {
  std::lock_guard lock(stateLock_);
  return framesSent_;
}

}  // namespace korvalin

namespace korvalin {

host::HRESULT Y4mSource::Load(std::u16string_view, const host::AM_MEDIA_TYPE*) {
  return host::E_UNEXPECTED;
}

host::HRESULT Y4mSource::GetCurFile(std::u16string* fileName, host::AM_MEDIA_TYPE* type) {
  if (fileName == nullptr) return host::E_POINTER;
  *fileName = host::Widen(fileName_);
  if (type != nullptr) *type = Yuy2VideoType(header().width, header().height,
                                             header().FrameDuration());
  return host::S_OK;
}

}  // namespace korvalin
