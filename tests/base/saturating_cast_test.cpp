#include "base/saturating_cast.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace korvalin {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(SaturatingCast, TruncatesInRangeAndClampsEverythingElse) {
  const struct {
    double value;
    int32_t to32;
    int64_t to64;
    uint32_t toUnsigned;
  } cases[] = {
      {0.0, 0, 0, 0},
      {-0.9, 0, 0, 0},
      {2.9, 2, 2, 2},
      {-2.9, -2, -2, 0},
      {2147483646.9, 2147483646, 2147483646, 2147483646u},
      {2147483647.5, INT32_MAX, 2147483647, 2147483647u},
      {-2147483648.5, INT32_MIN, -2147483648, 0},
      {1e13, INT32_MAX, 10000000000000, UINT32_MAX},
      {4294967295.9, INT32_MAX, 4294967295, UINT32_MAX},
      {9.3e18, INT32_MAX, INT64_MAX, UINT32_MAX},  // just past 2^63
      {-9.3e18, INT32_MIN, INT64_MIN, 0},
      {kInf, INT32_MAX, INT64_MAX, UINT32_MAX},
      {-kInf, INT32_MIN, INT64_MIN, 0},
      {kNan, 0, 0, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(SaturatingCast<int32_t>(c.value), c.to32) << c.value;
    EXPECT_EQ(SaturatingCast<int64_t>(c.value), c.to64) << c.value;
    EXPECT_EQ(SaturatingCast<uint32_t>(c.value), c.toUnsigned) << c.value;
    EXPECT_EQ(SaturatingCast<int32_t>(static_cast<long double>(c.value)), c.to32) << c.value;
  }
}

TEST(SaturatingCast, FloatBoundsThatRoundUpStillClamp) {
  // The largest int32 as a float is 2^31, one past the range.
  EXPECT_EQ(SaturatingCast<int32_t>(2147483648.0f), INT32_MAX);
  EXPECT_EQ(SaturatingCast<int32_t>(2147483520.0f), 2147483520);  // the float below it
  EXPECT_EQ(SaturatingCast<int64_t>(9223372036854775807.0), INT64_MAX);
  EXPECT_EQ(SaturatingCast<int16_t>(1e6f), INT16_MAX);
  EXPECT_EQ(SaturatingCast<uint8_t>(-1e6f), 0);
  static_assert(SaturatingCast<int32_t>(1e300) == INT32_MAX);
}

}  // namespace
}  // namespace korvalin
