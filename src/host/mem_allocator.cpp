#include "host/mem_allocator.h"

#include <bit>

#include "host/com_ptr.h"

namespace korvalin::host {

HRESULT MemAllocator::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IMemAllocator) return GetInterface(static_cast<IMemAllocator*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

HRESULT MemAllocator::SetProperties(const ALLOCATOR_PROPERTIES* request,
                                    ALLOCATOR_PROPERTIES* actual) {
  if (!request) return E_POINTER;
  std::lock_guard lock(mutex_);
  if (committed_) return VFW_E_ALREADY_COMMITTED;
  if (free_.size() != samples_.size()) return VFW_E_BUFFERS_OUTSTANDING;
  if (request->cbAlign < 1 || !std::has_single_bit(static_cast<uint32_t>(request->cbAlign))) {
    return VFW_E_BADALIGN;
  }
  if (request->cBuffers < 0 || request->cbBuffer < 0 || request->cbPrefix < 0) {
    return E_INVALIDARG;
  }
  props_ = *request;
  samples_.clear();
  free_.clear();
  memory_.clear();
  if (actual) *actual = props_;
  return S_OK;
}

HRESULT MemAllocator::GetProperties(ALLOCATOR_PROPERTIES* props) {
  if (!props) return E_POINTER;
  std::lock_guard lock(mutex_);
  *props = props_;
  return S_OK;
}

HRESULT MemAllocator::Commit() {
  std::lock_guard lock(mutex_);
  if (props_.cBuffers <= 0 || props_.cbBuffer <= 0) return VFW_E_SIZENOTSET;
  if (committed_) return S_OK;
  if (samples_.empty()) {
    try {
      AllocateSamples();
    } catch (const std::bad_alloc&) {
      samples_.clear();
      free_.clear();
      memory_.clear();
      return E_OUTOFMEMORY;
    }
  }
  committed_ = true;
  return S_OK;
}

void MemAllocator::AllocateSamples() {
  const std::size_t align = static_cast<std::size_t>(props_.cbAlign);
  const std::size_t stride =
      (static_cast<std::size_t>(props_.cbPrefix) + props_.cbBuffer + align - 1) / align * align;
  memory_.assign(stride * static_cast<std::size_t>(props_.cBuffers) + align, 0);
  const auto address = reinterpret_cast<uintptr_t>(memory_.data());
  uint8_t* base = memory_.data() + ((align - address % align) % align);
  for (int32_t i = 0; i < props_.cBuffers; ++i) {
    uint8_t* buffer = base + stride * static_cast<std::size_t>(i) + props_.cbPrefix;
    samples_.push_back(std::make_unique<MediaSample>(this, buffer, props_.cbBuffer));
    free_.push_back(samples_.back().get());
  }
}

HRESULT MemAllocator::Decommit() {
  {
    std::lock_guard lock(mutex_);
    committed_ = false;
  }
  sampleFreed_.notify_all();
  return S_OK;
}

HRESULT MemAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                                uint32_t flags) {
  if (!sample) return E_POINTER;
  *sample = nullptr;
  MediaSample* taken = nullptr;
  {
    std::unique_lock lock(mutex_);
    while (committed_ && free_.empty()) {
      if (flags & AM_GBF_NOWAIT) return VFW_E_TIMEOUT;
      sampleFreed_.wait(lock);
    }
    if (!committed_) return VFW_E_NOT_COMMITTED;
    taken = free_.back();
    free_.pop_back();
  }
  AddRef();  // released in ReleaseBuffer
  if (start) taken->SetTime(start, end);
  *sample = taken;
  taken->AddRef();
  return S_OK;
}

HRESULT MemAllocator::ReleaseBuffer(IMediaSample* sample) {
  auto* ours = dynamic_cast<MediaSample*>(sample);
  if (!ours) return E_INVALIDARG;
  ours->ResetProperties();
  {
    std::lock_guard lock(mutex_);
    free_.push_back(ours);
  }
  sampleFreed_.notify_one();
  Release();  // may destroy the allocator, and with it the sample: nothing may follow
  return S_OK;
}

HRESULT SetBuffersAtLeast(IMemAllocator* allocator, const ALLOCATOR_PROPERTIES& request) {
  ALLOCATOR_PROPERTIES actual;
  const HRESULT hr = allocator->SetProperties(&request, &actual);
  if (FAILED(hr)) return hr;
  return actual.cBuffers >= 1 && actual.cbBuffer >= request.cbBuffer ? S_OK : E_FAIL;
}

}  // namespace korvalin::host
