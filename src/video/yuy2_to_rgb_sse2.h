#pragma once

#include <cstdint>

#include "video/yuy2_to_rgb.h"

namespace korvalin {

#if defined(__SSE2__)
// SSE2 twins of the scalar conversions, bit-exact with them; same contract.
void Yuy2ToRgb32Sse2(const uint8_t* yuy2, uint8_t* out, int32_t pixels, const ColorTables& tables);
void Yuy2ToRgb565Sse2(const uint8_t* yuy2, uint8_t* out, int32_t pixels, const ColorTables& tables);

inline constexpr Yuy2ToRgbKernels kSse2Yuy2ToRgb{Yuy2ToRgb32Sse2, Yuy2ToRgb565Sse2};
#endif

}  // namespace korvalin
