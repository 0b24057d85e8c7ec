#pragma once

#include <cstdint>

#include "host/media_type.h"
#include "host/sample_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

// A sample of a MemAllocator's pool: a window on the pool's memory plus the sample's times,
// flags and attached type. Its last Release hands it back to the allocator instead of
// destroying it; the allocator owns it. A sample made without an allocator belongs to its
// creator, who points it at memory of its own (SetBuffer) and reuses it: Release destroys
// nothing.
class MediaSample : public UnknownBase, public IMediaSample {
 public:
  MediaSample(IMemAllocator* allocator, uint8_t* buffer, int32_t size);

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;
  uint32_t NonDelegatingRelease() override;

  HRESULT GetPointer(uint8_t** buffer) override;
  int32_t GetSize() override { return size_; }
  HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* end) override;
  HRESULT SetTime(const REFERENCE_TIME* start, const REFERENCE_TIME* end) override;
  HRESULT IsSyncPoint() override { return syncPoint_ ? S_OK : S_FALSE; }
  HRESULT SetSyncPoint(bool value) override;
  HRESULT IsPreroll() override { return preroll_ ? S_OK : S_FALSE; }
  HRESULT SetPreroll(bool value) override;
  int32_t GetActualDataLength() override { return actualLength_; }
  HRESULT SetActualDataLength(int32_t length) override;
  HRESULT GetMediaType(MediaTypePtr* type) override;
  HRESULT SetMediaType(const AM_MEDIA_TYPE* type) override;
  HRESULT IsDiscontinuity() override { return discontinuity_ ? S_OK : S_FALSE; }
  HRESULT SetDiscontinuity(bool value) override;
  HRESULT GetMediaTime(int64_t* start, int64_t* end) override;
  HRESULT SetMediaTime(const int64_t* start, const int64_t* end) override;

  // Back to a fresh sample: no times, flags, type or data (actual length 0).
  void ResetProperties();
  // For a sample without an allocator: the memory it stands for now.
  void SetBuffer(uint8_t* buffer, int32_t size);

 private:
  IMemAllocator* allocator_;
  uint8_t* buffer_;
  int32_t size_;
  int32_t actualLength_ = 0;
  bool hasStart_ = false, hasStop_ = false;
  REFERENCE_TIME start_ = 0, end_ = 0;
  bool hasMediaTime_ = false;
  int64_t mediaStart_ = 0, mediaEnd_ = 0;
  bool syncPoint_ = false, preroll_ = false, discontinuity_ = false;
  MediaTypePtr type_;
};

}  // namespace korvalin::host
