#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "host/media_sample.h"
#include "host/sample_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

// A pool of equal buffers in one block of memory. Each handed-out sample holds a reference
// on the allocator, so the pool outlives its last sample. Derived allocators may override
// GetBuffer to dress the sample (attach a pending media type, say) after the base hands
// it out.
class MemAllocator : public UnknownBase, public IMemAllocator {
 public:
  MemAllocator() = default;

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;

  // VFW_E_ALREADY_COMMITTED, VFW_E_BUFFERS_OUTSTANDING, VFW_E_BADALIGN (not a power of
  // two); *actual (when given) receives what was set.
  HRESULT SetProperties(const ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;
  HRESULT GetProperties(ALLOCATOR_PROPERTIES* props) override;
  // VFW_E_SIZENOTSET before SetProperties asked for at least one non-empty buffer.
  HRESULT Commit() override;
  HRESULT Decommit() override;
  HRESULT GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                    uint32_t flags) override;
  HRESULT ReleaseBuffer(IMediaSample* sample) override;

 private:
  // Lays out the samples over fresh memory; under the lock, with every sample in the pool.
  void AllocateSamples();

  std::mutex mutex_;
  std::condition_variable sampleFreed_;
  ALLOCATOR_PROPERTIES props_{0, 0, 1, 0};
  bool committed_ = false;
  std::vector<uint8_t> memory_;
  std::vector<std::unique_ptr<MediaSample>> samples_;
  std::vector<MediaSample*> free_;
};

// Asks `allocator` for the buffers of `request`: its failure, E_FAIL when it settles on no
// buffer or smaller ones, else S_OK. What output pins call from DecideBufferSize.
HRESULT SetBuffersAtLeast(IMemAllocator* allocator, const ALLOCATOR_PROPERTIES& request);

}  // namespace korvalin::host
