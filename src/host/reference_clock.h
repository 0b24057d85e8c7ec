#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "host/clock_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

// A reference clock: GetTime answers the private time but never less than it answered
// before, and an advise thread sets the events and releases the semaphores of pending
// advises when their time comes. By itself it runs at real time (the graph's default
// clock); a derived clock changes the pace by overriding GetPrivateTime.
class ReferenceClock : public UnknownBase, public IReferenceClock {
 public:
  explicit ReferenceClock(IUnknown* outer = nullptr);
  ~ReferenceClock() override;

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;

  HRESULT GetTime(REFERENCE_TIME* time) override;
  // E_INVALIDARG when the time is not positive.
  HRESULT AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, Event* event,
                     uintptr_t* cookie) override;
  // E_INVALIDARG for a negative start or a period not positive.
  HRESULT AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME period, Semaphore* semaphore,
                         uintptr_t* cookie) override;
  HRESULT Unadvise(uintptr_t cookie) override;

  // The clock's own time: real time in 100-ns units since the clock was made. Called under
  // the clock's lock, one call at a time, from any thread.
  virtual REFERENCE_TIME GetPrivateTime();

 protected:
  // Joins the advise thread while the derived clock still exists.
  void OnLastRelease() override;
  void StopAdviseThread();

 private:
  struct Advise {
    uintptr_t cookie;
    REFERENCE_TIME due;
    REFERENCE_TIME period;  // 0 for a one-shot advise
    Event* event;
    Semaphore* semaphore;
  };

  HRESULT AddAdvise(Advise advise, uintptr_t* cookie);
  void AdviseLoop();
  // Signals what is due at `now`; the time until the next one is due, or -1 for none.
  REFERENCE_TIME FireDue(REFERENCE_TIME now);

  std::recursive_mutex timeLock_;
  REFERENCE_TIME lastTime_ = 0;
  const std::chrono::steady_clock::time_point origin_;

  std::mutex adviseLock_;
  std::condition_variable advisesChanged_;
  std::vector<Advise> advises_;
  uintptr_t nextCookie_ = 1;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace korvalin::host
