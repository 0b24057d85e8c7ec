#pragma once

#include <cstdint>

namespace korvalin {

// a * b / c with a 64-bit intermediate, rounded to nearest with halves away from zero.
// Returns -1 when c is 0 or the result does not fit in 32 bits, as the Windows call does.
int32_t MulDiv(int32_t a, int32_t b, int32_t c);

}  // namespace korvalin
