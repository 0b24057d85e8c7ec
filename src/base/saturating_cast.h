#pragma once

#include <concepts>
#include <limits>

namespace korvalin {

// A floating-point number as an integer type, truncated toward zero like a cast, but values
// beyond the type's range become its minimum or maximum and NaN becomes 0. A plain cast of
// such a value is undefined behaviour, and numbers that come from files or other filters can
// be anything.
template <std::integral To, std::floating_point From>
constexpr To SaturatingCast(From value) {
  constexpr To kMin = std::numeric_limits<To>::min();
  constexpr To kMax = std::numeric_limits<To>::max();
  if (value != value) return 0;
  // kMin is 0 or a power of two, exact in every floating-point type. kMax may round up to
  // the next power of two; either way every value below the bound fits.
  if (value <= static_cast<From>(kMin)) return kMin;
  if (value >= static_cast<From>(kMax)) return kMax;
  return static_cast<To>(value);
}

}  // namespace korvalin
