#pragma once

#include <cstdint>

#include "host/format_blocks.h"
#include "host/media_type.h"
#include "host/unknown.h"

namespace korvalin::host {

// A buffer travelling downstream, with its times and flags.
struct IMediaSample : virtual IUnknown {
  static constexpr IID kIid = HostIid(1);

  virtual HRESULT GetPointer(uint8_t** buffer) = 0;
  virtual int32_t GetSize() = 0;
  // S_OK with both times; VFW_S_NO_STOP_TIME when only a start was set (*end = start + 1);
  // VFW_E_SAMPLE_TIME_NOT_SET when none was.
  virtual HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* end) = 0;
  // A null start clears both times; a null end keeps only the start.
  virtual HRESULT SetTime(const REFERENCE_TIME* start, const REFERENCE_TIME* end) = 0;
  virtual HRESULT IsSyncPoint() = 0;  // S_OK or S_FALSE, as the other Is... queries
  virtual HRESULT SetSyncPoint(bool value) = 0;
  virtual HRESULT IsPreroll() = 0;
  virtual HRESULT SetPreroll(bool value) = 0;
  virtual int32_t GetActualDataLength() = 0;
  // VFW_E_BUFFER_OVERFLOW beyond GetSize().
  virtual HRESULT SetActualDataLength(int32_t length) = 0;
  // S_OK with a copy of the attached type, or S_FALSE with *type empty when none is.
  virtual HRESULT GetMediaType(MediaTypePtr* type) = 0;
  // Attaches a copy of *type; null detaches.
  virtual HRESULT SetMediaType(const AM_MEDIA_TYPE* type) = 0;
  virtual HRESULT IsDiscontinuity() = 0;
  virtual HRESULT SetDiscontinuity(bool value) = 0;
  // S_OK, or VFW_E_MEDIA_TIME_NOT_SET.
  virtual HRESULT GetMediaTime(int64_t* start, int64_t* end) = 0;
  // A null start clears the media times; otherwise both are needed (E_POINTER).
  virtual HRESULT SetMediaTime(const int64_t* start, const int64_t* end) = 0;
};

struct ALLOCATOR_PROPERTIES {
  int32_t cBuffers = 0;
  int32_t cbBuffer = 0;
  int32_t cbAlign = 1;
  int32_t cbPrefix = 0;
};

// GetBuffer flag: fail with VFW_E_TIMEOUT instead of waiting for a free buffer.
inline constexpr uint32_t AM_GBF_NOWAIT = 4;

// A pool of samples shared by the two pins of a connection.
struct IMemAllocator : virtual IUnknown {
  static constexpr IID kIid = HostIid(2);

  virtual HRESULT SetProperties(const ALLOCATOR_PROPERTIES* request,
                                ALLOCATOR_PROPERTIES* actual) = 0;
  virtual HRESULT GetProperties(ALLOCATOR_PROPERTIES* props) = 0;
  virtual HRESULT Commit() = 0;
  // Wakes every GetBuffer waiting; the memory goes once all samples are back.
  virtual HRESULT Decommit() = 0;
  // Waits for a free sample unless AM_GBF_NOWAIT; VFW_E_NOT_COMMITTED while decommitted.
  // The sample goes back to the pool on its last Release.
  virtual HRESULT GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                            uint32_t flags) = 0;
  virtual HRESULT ReleaseBuffer(IMediaSample* sample) = 0;
};

inline constexpr IID IID_IMediaSample = IMediaSample::kIid;
inline constexpr IID IID_IMemAllocator = IMemAllocator::kIid;

}  // namespace korvalin::host
