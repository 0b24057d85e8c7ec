#include "host/media_sample.h"

namespace korvalin::host {

MediaSample::MediaSample(IMemAllocator* allocator, uint8_t* buffer, int32_t size)
    : allocator_(allocator), buffer_(buffer), size_(size) {}

HRESULT MediaSample::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IMediaSample) return GetInterface(static_cast<IMediaSample*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

uint32_t MediaSample::NonDelegatingRelease() {
  const uint32_t count = DecrementCount();
  if (count == 0 && allocator_ != nullptr) allocator_->ReleaseBuffer(this);  // may destroy this sample's allocator
  return count;
}

HRESULT MediaSample::GetPointer(uint8_t** buffer) {
  if (!buffer) return E_POINTER;
  *buffer = buffer_;
  return S_OK;
}

HRESULT MediaSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* end) {
  if (!start || !end) return E_POINTER;
  if (!hasStart_) return VFW_E_SAMPLE_TIME_NOT_SET;
  *start = start_;
  if (!hasStop_) {
    *end = start_ + 1;
    return VFW_S_NO_STOP_TIME;
  }
  *end = end_;
  return S_OK;
}

HRESULT MediaSample::SetTime(const REFERENCE_TIME* start, const REFERENCE_TIME* end) {
  hasStart_ = start != nullptr;
  hasStop_ = hasStart_ && end != nullptr;
  start_ = hasStart_ ? *start : 0;
  end_ = hasStop_ ? *end : 0;
  return S_OK;
}

HRESULT MediaSample::SetSyncPoint(bool value) {
  syncPoint_ = value;
  return S_OK;
}

HRESULT MediaSample::SetPreroll(bool value) {
  preroll_ = value;
  return S_OK;
}

HRESULT MediaSample::SetDiscontinuity(bool value) {
  discontinuity_ = value;
  return S_OK;
}

HRESULT MediaSample::SetActualDataLength(int32_t length) {
  if (length < 0 || length > size_) return VFW_E_BUFFER_OVERFLOW;
  actualLength_ = length;
  return S_OK;
}

HRESULT MediaSample::GetMediaType(MediaTypePtr* type) {
  if (!type) return E_POINTER;
  if (!type_) {
    type->reset();
    return S_FALSE;
  }
  *type = CreateMediaType(*type_);
  return *type ? S_OK : E_OUTOFMEMORY;
}

HRESULT MediaSample::SetMediaType(const AM_MEDIA_TYPE* type) {
  if (!type) {
    type_.reset();
    return S_OK;
  }
  MediaTypePtr copy = CreateMediaType(*type);
  if (!copy) return E_OUTOFMEMORY;
  type_ = std::move(copy);
  return S_OK;
}

HRESULT MediaSample::GetMediaTime(int64_t* start, int64_t* end) {
  if (!start || !end) return E_POINTER;
  if (!hasMediaTime_) return VFW_E_MEDIA_TIME_NOT_SET;
  *start = mediaStart_;
  *end = mediaEnd_;
  return S_OK;
}

HRESULT MediaSample::SetMediaTime(const int64_t* start, const int64_t* end) {
  if (!start) {
    hasMediaTime_ = false;
    return S_OK;
  }
  if (!end) return E_POINTER;
  hasMediaTime_ = true;
  mediaStart_ = *start;
  mediaEnd_ = *end;
  return S_OK;
}

void MediaSample::ResetProperties() {
  actualLength_ = 0;
  hasStart_ = hasStop_ = hasMediaTime_ = false;
  syncPoint_ = preroll_ = discontinuity_ = false;
  type_.reset();
}

void MediaSample::SetBuffer(uint8_t* buffer, int32_t size) {
  buffer_ = buffer;
  size_ = size;
}

}  // namespace korvalin::host
