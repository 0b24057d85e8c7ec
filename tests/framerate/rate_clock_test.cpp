#include "framerate/rate_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "framerate/long_unsigned.h"
#include "host/com_ptr.h"

namespace korvalin {
namespace {

__extension__ typedef unsigned __int128 u128;

int WordsOf(u128 value) {
  int words = 0;
  for (; value != 0; value >>= 32) ++words;
  return words;
}

TEST(LongUnsignedTest, MatchesWideArithmetic) {
  std::mt19937_64 random(20240601);
  for (int i = 0; i < 2000; ++i) {
    const uint64_t value = random() >> (random() % 64);
    const uint32_t f1 = static_cast<uint32_t>(random() >> (random() % 64));
    const uint32_t f2 = static_cast<uint32_t>(random());
    const uint32_t divisor = static_cast<uint32_t>(random() >> (32 + random() % 32)) | 1;
    LongUnsigned n;
    n.Set(value);
    EXPECT_EQ(n.WordCount(), WordsOf(value));
    n.MultiplyBy(f1);
    n.MultiplyBy(f2);
    const u128 product = u128{value} * f1 * f2;
    EXPECT_EQ(n.WordCount(), WordsOf(product));
    EXPECT_EQ(n.DivideBy(divisor), static_cast<uint32_t>(product % divisor));
    EXPECT_EQ(n.Low64(), static_cast<uint64_t>(product / divisor));
    EXPECT_EQ(n.WordCount(), WordsOf(product / divisor));
  }
}

TEST(LongUnsignedTest, CarriesAcrossManyWordsAndTrims) {
  LongUnsigned n;
  n.Set(1);
  for (int i = 0; i < 66; ++i) n.MultiplyBy(1u << 31);  // 2^2046: the top of the 64th word
  EXPECT_EQ(n.WordCount(), 64);
  for (int i = 0; i < 65; ++i) EXPECT_EQ(n.DivideBy(1u << 31), 0u);
  EXPECT_EQ(n.Low64(), uint64_t{1} << 31);
  n.MultiplyBy(0);
  EXPECT_EQ(n.WordCount(), 0);
  n.Set(0);
  EXPECT_EQ(n.WordCount(), 0);
  n.Set(~uint64_t{0});
  n.Clear();
  EXPECT_EQ(n.Low64(), 0u);
}

TEST(ScaleClockTimeTest, ScalesExactlyBeyond64BitProducts) {
  const auto wide = [](int64_t t, int32_t rate) {
    return static_cast<int64_t>(static_cast<uint64_t>(u128{static_cast<uint64_t>(t)} *
                                                      static_cast<uint32_t>(rate) / 400000));
  };
  const struct {
    int64_t time;
    int32_t rate;
    int64_t expected;
  } cases[] = {
      {4'000'000'000'000, 416666, 4'166'660'000'000},  // about 4.6 days at 24 fps
      {4'000'000'000'000, 0, 4'000'000'000'000},
      {123456789, -1, 123456789},
      {400000, 417083, 417083},
      {399999, 1, 0},
      {INT64_MAX, 416666, wide(INT64_MAX, 416666)},
      {-1, 408163, wide(-1, 408163)},  // taken as unsigned
  };
  for (const auto& c : cases) EXPECT_EQ(ScaleClockTime(c.time, c.rate), c.expected) << c.time;
}

TEST(RateClockTest, RunsFasterByItsRate) {
  using std::chrono::steady_clock;
  const auto units = [](steady_clock::duration d) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(d).count() / 100;
  };
  const auto made = steady_clock::now();
  auto clock = host::MakeCom<RateClock>();
  const auto madeAfter = steady_clock::now();
  EXPECT_EQ(clock->Rate(), 0);
  clock->SetRate(800000);  // twice real time, to stand out from timing noise
  const auto before = steady_clock::now();
  const host::REFERENCE_TIME time = clock->GetPrivateTime();
  const auto after = steady_clock::now();
  EXPECT_GE(time, 2 * units(before - madeAfter));
  EXPECT_LE(time, 2 * units(after - made));

  // Released with an advise pending: the advise thread goes before the clock does.
  host::Semaphore ticks;
  uintptr_t cookie = 0;
  ASSERT_EQ(clock->AdvisePeriodic(time, 10000, &ticks, &cookie), host::S_OK);
  EXPECT_TRUE(ticks.Wait(std::chrono::milliseconds(10000)));
  clock.Reset();
}

}  // namespace
}  // namespace korvalin
