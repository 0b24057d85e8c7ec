#pragma once

#include <atomic>
#include <cstdint>

#include "host/reference_clock.h"

namespace korvalin {

// The frame duration, in 100-ns units, that a converted clip is played at: 25 per second.
inline constexpr int32_t kTargetFrameDuration = 400000;

// privateTime x rate / 400000, rounded down and computed exactly (the product needs up to
// 96 bits), the time taken as unsigned; the low 64 bits of the result. A rate below 1
// leaves the time as it is.
int64_t ScaleClockTime(int64_t privateTime, int32_t rate);

// A reference clock that runs rate / 400000 times as fast as real time, so that frames
// stamped in source time are presented at 25 per second. The rate is 0 (real time) until
// set. Since the whole accumulated time is scaled, raising the rate while the graph runs
// makes the clock jump forward at once.
class RateClock : public host::ReferenceClock {
 public:
  explicit RateClock(host::IUnknown* outer = nullptr);
  // Joins the advise thread here: it calls GetPrivateTime, which must not outlive this part.
  ~RateClock() override;

  // Written under the owner's lock, read by any thread asking for the time without it.
  void SetRate(int32_t rate) { rate_.store(rate, std::memory_order_relaxed); }
  int32_t Rate() const { return rate_.load(std::memory_order_relaxed); }

  host::REFERENCE_TIME GetPrivateTime() override;

 private:
  std::atomic<int32_t> rate_{0};
};

}  // namespace korvalin
