#include "framerate/rate_clock.h"

#include "framerate/long_unsigned.h"

namespace korvalin {

int64_t ScaleClockTime(int64_t privateTime, int32_t rate) {
  if (rate < 1) return privateTime;
  LongUnsigned scaled;
  scaled.Set(static_cast<uint64_t>(privateTime));
  scaled.MultiplyBy(static_cast<uint32_t>(rate));
  scaled.DivideBy(static_cast<uint32_t>(kTargetFrameDuration));
  return static_cast<int64_t>(scaled.Low64());
}

RateClock::RateClock(host::IUnknown* outer) : ReferenceClock(outer) {}

RateClock::~RateClock() {
  StopAdviseThread();
}

host::REFERENCE_TIME RateClock::GetPrivateTime() {
  return ScaleClockTime(ReferenceClock::GetPrivateTime(), Rate());
}

}  // namespace korvalin
