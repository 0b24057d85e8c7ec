#pragma once

#include <mutex>

#include "host/media_type.h"
#include "host/mem_allocator.h"

namespace korvalin {

// A memory allocator that attaches a pending media type to the next buffer it hands out,
// so the upstream filter finds the new format on the first buffer it gets.
class FormatChangeAllocator : public host::MemAllocator {
 public:
  void SetPendingType(const host::AM_MEDIA_TYPE& type);
  bool Pending();
  host::HRESULT GetBuffer(host::IMediaSample** sample, host::REFERENCE_TIME* start,
                          host::REFERENCE_TIME* end, uint32_t flags) override;

 private:
  std::mutex pendingLock_;
  host::AM_MEDIA_TYPE pendingType_;
  bool pending_ = false;
};

}  // namespace korvalin
