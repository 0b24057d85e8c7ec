#include "filter/format_change_allocator.h"

namespace korvalin {

using namespace host;

void FormatChangeAllocator::SetPendingType(const AM_MEDIA_TYPE& type) {
  std::lock_guard lock(pendingLock_);
  pendingType_ = type;
  pending_ = true;
}

bool FormatChangeAllocator::Pending() {
  std::lock_guard lock(pendingLock_);
  return pending_;
}

HRESULT FormatChangeAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME* start,
                                         REFERENCE_TIME* end, uint32_t flags) {
  const HRESULT hr = MemAllocator::GetBuffer(sample, start, end, flags);
  if (FAILED(hr)) return hr;
  std::lock_guard lock(pendingLock_);
  if (pending_ && sample != nullptr && *sample != nullptr) {
    (*sample)->SetMediaType(&pendingType_);
    pending_ = false;
  }
  return hr;
}

}  // namespace korvalin
