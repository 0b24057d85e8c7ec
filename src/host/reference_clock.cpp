#include "host/reference_clock.h"

#include <algorithm>

namespace korvalin::host {
namespace {

// The advise thread looks again at least this often: a derived clock may change its pace.
constexpr std::chrono::milliseconds kLongestWait{100};

}  // namespace

ReferenceClock::ReferenceClock(IUnknown* outer)
    : UnknownBase(outer), origin_(std::chrono::steady_clock::now()) {}

ReferenceClock::~ReferenceClock() {
  StopAdviseThread();
}

HRESULT ReferenceClock::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IReferenceClock) {
    return GetInterface(static_cast<IReferenceClock*>(this), out);
  }
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

REFERENCE_TIME ReferenceClock::GetPrivateTime() {
  const auto elapsed = std::chrono::steady_clock::now() - origin_;
  return std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count() / 100;
}

HRESULT ReferenceClock::GetTime(REFERENCE_TIME* time) {
  if (!time) return E_POINTER;
  std::lock_guard lock(timeLock_);
  const REFERENCE_TIME now = GetPrivateTime();
  if (now > lastTime_) {
    lastTime_ = now;
    *time = now;
    return S_OK;
  }
  *time = lastTime_;
  return S_FALSE;
}

HRESULT ReferenceClock::AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, Event* event,
                                   uintptr_t* cookie) {
  if (!event || !cookie) return E_POINTER;
  const REFERENCE_TIME due = baseTime + streamTime;
  if (due <= 0) return E_INVALIDARG;
  return AddAdvise({0, due, 0, event, nullptr}, cookie);
}

HRESULT ReferenceClock::AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME period,
                                       Semaphore* semaphore, uintptr_t* cookie) {
  if (!semaphore || !cookie) return E_POINTER;
  if (startTime < 0 || period <= 0) return E_INVALIDARG;
  return AddAdvise({0, startTime, period, nullptr, semaphore}, cookie);
}

HRESULT ReferenceClock::AddAdvise(Advise advise, uintptr_t* cookie) {
  {
    std::lock_guard lock(adviseLock_);
    if (stopping_) return E_UNEXPECTED;
    advise.cookie = nextCookie_++;
    *cookie = advise.cookie;
    advises_.push_back(advise);
    if (!thread_.joinable()) thread_ = std::thread([this] { AdviseLoop(); });
  }
  advisesChanged_.notify_all();
  return S_OK;
}

HRESULT ReferenceClock::Unadvise(uintptr_t cookie) {
  std::lock_guard lock(adviseLock_);
  const auto removed = std::erase_if(advises_, [&](const Advise& a) { return a.cookie == cookie; });
  return removed ? S_OK : S_FALSE;
}

void ReferenceClock::AdviseLoop() {
  std::unique_lock lock(adviseLock_);
  while (!stopping_) {
    REFERENCE_TIME now = 0;
    GetTime(&now);
    const REFERENCE_TIME untilNext = FireDue(now);
    auto wait = kLongestWait;
    if (untilNext >= 0) {
      wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(
                                std::chrono::nanoseconds(untilNext * 100)));
    }
    advisesChanged_.wait_for(lock, wait);
  }
}

REFERENCE_TIME ReferenceClock::FireDue(REFERENCE_TIME now) {
  REFERENCE_TIME untilNext = -1;
  for (auto it = advises_.begin(); it != advises_.end();) {
    if (it->due <= now) {
      if (it->event) {
        it->event->Set();
        it = advises_.erase(it);
        continue;
      }
      it->semaphore->Release();
      it->due += it->period;
    }
    const REFERENCE_TIME until = std::max<REFERENCE_TIME>(it->due - now, 0);
    untilNext = untilNext < 0 ? until : std::min(untilNext, until);
    ++it;
  }
  return untilNext;
}

void ReferenceClock::OnLastRelease() {
  StopAdviseThread();
}

void ReferenceClock::StopAdviseThread() {
  {
    std::lock_guard lock(adviseLock_);
    stopping_ = true;
  }
  advisesChanged_.notify_all();
  if (!thread_.joinable()) return;
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();  // the last reference went on the advise thread itself
  } else {
    thread_.join();
  }
}

}  // namespace korvalin::host
