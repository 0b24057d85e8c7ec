#include "host/reference_clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "host/com_ptr.h"

namespace korvalin::host {
namespace {

constexpr std::chrono::milliseconds kGenerous{10000};

// A clock whose private time is set by the test.
class ScriptedClock : public ReferenceClock {
 public:
  using ReferenceClock::ReferenceClock;
  REFERENCE_TIME GetPrivateTime() override { return now; }
  std::atomic<REFERENCE_TIME> now{0};
};

TEST(ReferenceClockTest, NeverRunsBackwards) {
  auto clock = MakeCom<ScriptedClock>();
  struct Step {
    REFERENCE_TIME privateTime;
    REFERENCE_TIME time;
    HRESULT result;
  };
  const Step steps[] = {
      {100, 100, S_OK}, {50, 100, S_FALSE}, {100, 100, S_FALSE}, {300, 300, S_OK}};
  for (const Step& step : steps) {
    clock->now = step.privateTime;
    REFERENCE_TIME time = 0;
    EXPECT_EQ(clock->GetTime(&time), step.result);
    EXPECT_EQ(time, step.time);
  }
}

TEST(ReferenceClockTest, AdvisesFireWhenTheirTimeComes) {
  auto clock = MakeCom<ScriptedClock>();
  Event event;
  Semaphore ticks;
  uintptr_t once = 0, periodic = 0;
  ASSERT_EQ(clock->AdviseTime(1000, 500, &event, &once), S_OK);
  ASSERT_EQ(clock->AdvisePeriodic(1000, 100, &ticks, &periodic), S_OK);
  EXPECT_EQ(clock->AdviseTime(0, 0, &event, &once), E_INVALIDARG);
  EXPECT_FALSE(event.Wait(std::chrono::milliseconds(30)));

  clock->now = 1000;
  EXPECT_TRUE(ticks.Wait(kGenerous));
  EXPECT_FALSE(event.Wait(std::chrono::milliseconds(30)));
  clock->now = 1500;
  EXPECT_TRUE(event.Wait(kGenerous));
  EXPECT_TRUE(ticks.Wait(kGenerous));
  EXPECT_EQ(clock->Unadvise(once), S_FALSE);  // a fired one-shot is gone
  EXPECT_EQ(clock->Unadvise(periodic), S_OK);
}

TEST(ReferenceClockTest, RealTimeClockAdvances) {
  auto clock = MakeCom<ReferenceClock>();
  REFERENCE_TIME start = 0;
  clock->GetTime(&start);
  Event event;
  uintptr_t cookie = 0;
  ASSERT_EQ(clock->AdviseTime(start, 20 * 10000, &event, &cookie), S_OK);
  EXPECT_TRUE(event.Wait(kGenerous));
  REFERENCE_TIME later = 0;
  clock->GetTime(&later);
  EXPECT_GE(later, start + 20 * 10000);
}

// A filter-like object that offers a clock as part of itself, the clock aggregated into it.
class ClockOwner : public UnknownBase {
 public:
  ClockOwner() : clock_(InnerPtr<ScriptedClock>::Make(this)) {}
  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override {
    if (iid == IID_IReferenceClock) return clock_->NonDelegatingQueryInterface(iid, out);
    return UnknownBase::NonDelegatingQueryInterface(iid, out);
  }
  ScriptedClock* Clock() { return clock_.Get(); }

 private:
  InnerPtr<ScriptedClock> clock_;
};

TEST(ReferenceClockTest, AggregatedClockSharesItsOwnersIdentity) {
  auto owner = MakeCom<ClockOwner>();
  auto clock = QueryAs<IReferenceClock>(owner.Get());
  ASSERT_TRUE(clock);
  EXPECT_EQ(QueryAs<IUnknown>(clock.Get()).Get(), static_cast<IUnknown*>(owner.Get()));

  // The owner lives as long as its clock is held, and its advise thread with it.
  ScriptedClock* inner = owner->Clock();
  owner.Reset();
  Event event;
  uintptr_t cookie = 0;
  ASSERT_EQ(clock->AdviseTime(10, 0, &event, &cookie), S_OK);
  inner->now = 10;
  EXPECT_TRUE(event.Wait(kGenerous));
  clock.Reset();  // destroys owner and clock, joining the advise thread
}

}  // namespace
}  // namespace korvalin::host
