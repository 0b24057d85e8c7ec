#include "video/yuy2_to_rgb_sse2.h"

#if defined(__SSE2__)

#include <emmintrin.h>

namespace korvalin {

namespace {

// Eight pixels, each channel as eight signed 16-bit lanes before saturation.
struct Rgb16 {
  __m128i r, g, b;
};

// The scalar formulas, regrouped so that every factor fits a 16-bit multiply: each
// constant k is split into a multiple of 65536, applied as a shift, and a rest below 32768
// in magnitude (76309 = 65536 + 10773, 104595 = 131072 - 26477, 53281 = 65536 - 12255,
// 132252 = 131072 + 1180). The sums are the same 32-bit integers, so the results are
// bit-exact.
inline Rgb16 ConvertEightPixels(const uint8_t* yuy2) {
  const __m128i in = _mm_loadu_si128(reinterpret_cast<const __m128i*>(yuy2));
  const __m128i zero = _mm_setzero_si128();
  const __m128i y = _mm_sub_epi16(_mm_and_si128(in, _mm_set1_epi16(0x00FF)), _mm_set1_epi16(16));
  const __m128i uv = _mm_srli_epi16(in, 8);  // per macro-pixel, U in the low half, V high

  // c = (Y - 16) * 76309 per pixel, pixels 0..3 and 4..7.
  const __m128i productLow = _mm_mullo_epi16(y, _mm_set1_epi16(10773));
  const __m128i productHigh = _mm_mulhi_epi16(y, _mm_set1_epi16(10773));
  const __m128i c0 =
      _mm_add_epi32(_mm_unpacklo_epi16(productLow, productHigh), _mm_unpacklo_epi16(zero, y));
  const __m128i c1 =
      _mm_add_epi32(_mm_unpackhi_epi16(productLow, productHigh), _mm_unpackhi_epi16(zero, y));

  // Chroma terms per macro-pixel.
  const __m128i v65536 = _mm_and_si128(uv, _mm_set1_epi32(static_cast<int32_t>(0xFFFF0000u)));
  const __m128i u65536 = _mm_slli_epi32(uv, 16);
  const __m128i redTerm = _mm_add_epi32(
      _mm_add_epi32(v65536, v65536),
      _mm_add_epi32(_mm_madd_epi16(uv, _mm_set1_epi32(-26477 * 65536)), _mm_set1_epi32(-13355392)));
  const __m128i greenTerm =
      _mm_add_epi32(_mm_sub_epi32(_mm_madd_epi16(uv, _mm_set_epi16(12255, -25625, 12255, -25625,
                                                                   12255, -25625, 12255, -25625)),
                                  v65536),
                    _mm_set1_epi32(10132736));
  const __m128i blueTerm = _mm_add_epi32(
      _mm_add_epi32(u65536, u65536),
      _mm_add_epi32(_mm_madd_epi16(uv, _mm_set1_epi32(1180)), _mm_set1_epi32(-16895488)));

  // Both pixels of a macro-pixel share its chroma term.
  const auto channel = [&](__m128i term) {
    const __m128i low = _mm_srai_epi32(_mm_add_epi32(c0, _mm_unpacklo_epi32(term, term)), 16);
    const __m128i high = _mm_srai_epi32(_mm_add_epi32(c1, _mm_unpackhi_epi32(term, term)), 16);
    return _mm_packs_epi32(low, high);
  };
  return {channel(redTerm), channel(greenTerm), channel(blueTerm)};
}

// Saturation to 0..255 replaces the table: the indices stay within -320..575, where the
// table gives exactly this clamp.
inline __m128i Clamp255(__m128i x) {
  return _mm_min_epi16(_mm_max_epi16(x, _mm_setzero_si128()), _mm_set1_epi16(255));
}

// `padding` holds the fourth byte of every pixel in each of its bytes.
inline void StoreRgb32(const Rgb16& p, __m128i padding, uint8_t* out) {
  const __m128i redGreen = _mm_packus_epi16(p.r, p.g);
  const __m128i blue = _mm_packus_epi16(p.b, p.b);
  const __m128i blueGreen = _mm_unpacklo_epi8(blue, _mm_srli_si128(redGreen, 8));
  const __m128i redPadding = _mm_unpacklo_epi8(redGreen, padding);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi16(blueGreen, redPadding));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16),
                   _mm_unpackhi_epi16(blueGreen, redPadding));
}

inline void StoreRgb565(const Rgb16& p, uint8_t* out) {
  const __m128i r = _mm_slli_epi16(_mm_and_si128(Clamp255(p.r), _mm_set1_epi16(0xF8)), 8);
  const __m128i g = _mm_slli_epi16(_mm_and_si128(Clamp255(p.g), _mm_set1_epi16(0xFC)), 3);
  const __m128i b = _mm_srli_epi16(Clamp255(p.b), 3);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_or_si128(_mm_or_si128(r, g), b));
}

}  // namespace

void Yuy2ToRgb32Sse2(const uint8_t* yuy2, uint8_t* out, int32_t pixels, const ColorTables& tables) {
  const __m128i padding = _mm_set1_epi8(static_cast<char>(tables.Rgb32Padding()));
  int32_t done = 0;
  for (; pixels - done >= 8; done += 8)
    StoreRgb32(ConvertEightPixels(yuy2 + 2 * done), padding, out + 4 * done);
  Yuy2ToRgb32Scalar(yuy2 + 2 * done, out + 4 * done, pixels - done, tables);
}

void Yuy2ToRgb565Sse2(const uint8_t* yuy2, uint8_t* out, int32_t pixels,
                      const ColorTables& tables) {
  int32_t done = 0;
  for (; pixels - done >= 8; done += 8)
    StoreRgb565(ConvertEightPixels(yuy2 + 2 * done), out + 2 * done);
  Yuy2ToRgb565Scalar(yuy2 + 2 * done, out + 2 * done, pixels - done, tables);
}

}  // namespace korvalin

#endif  // __SSE2__
