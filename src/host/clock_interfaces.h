#pragma once

#include <cstdint>

#include "host/format_blocks.h"
#include "host/sync_objects.h"
#include "host/unknown.h"

namespace korvalin::host {

// A clock the filters of a graph share. Times are in 100-nanosecond units.
struct IReferenceClock : virtual IUnknown {
  static constexpr IID kIid = HostIid(3);

  // S_OK, or S_FALSE when the time has not moved since the last call.
  virtual HRESULT GetTime(REFERENCE_TIME* time) = 0;
  // Sets *event once the clock reaches baseTime + streamTime.
  virtual HRESULT AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, Event* event,
                             uintptr_t* cookie) = 0;
  // Releases *semaphore at startTime and every period after it until Unadvise.
  virtual HRESULT AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME period,
                                 Semaphore* semaphore, uintptr_t* cookie) = 0;
  // S_OK, or S_FALSE for an unknown cookie.
  virtual HRESULT Unadvise(uintptr_t cookie) = 0;
};

inline constexpr IID IID_IReferenceClock = IReferenceClock::kIid;

}  // namespace korvalin::host
