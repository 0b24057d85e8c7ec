#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "host/guid.h"

namespace korvalin::host {

// The format blocks of media types, field for field and byte for byte as published, so that
// filters checking a block's size or reading it at an offset see what they expect. Blocks
// travel in a media type as bytes and are read and written with ReadFormatBlock and
// SetFormatBlock (media_type.h), never by casting the bytes.
static_assert(std::endian::native == std::endian::little, "format blocks are little-endian");

using REFERENCE_TIME = int64_t;  // 100-nanosecond units

struct RECT {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};

struct BITMAPINFOHEADER {
  uint32_t biSize = 40;
  int32_t biWidth = 0;
  int32_t biHeight = 0;
  uint16_t biPlanes = 1;
  uint16_t biBitCount = 0;
  uint32_t biCompression = 0;
  uint32_t biSizeImage = 0;
  int32_t biXPelsPerMeter = 0;
  int32_t biYPelsPerMeter = 0;
  uint32_t biClrUsed = 0;
  uint32_t biClrImportant = 0;
};

inline constexpr uint32_t BI_RGB = 0;
inline constexpr uint32_t BI_BITFIELDS = 3;

struct VIDEOINFOHEADER {
  RECT rcSource;
  RECT rcTarget;
  uint32_t dwBitRate = 0;
  uint32_t dwBitErrorRate = 0;
  REFERENCE_TIME AvgTimePerFrame = 0;
  BITMAPINFOHEADER bmiHeader;
};

struct VIDEOINFOHEADER2 {
  RECT rcSource;
  RECT rcTarget;
  uint32_t dwBitRate = 0;
  uint32_t dwBitErrorRate = 0;
  REFERENCE_TIME AvgTimePerFrame = 0;
  uint32_t dwInterlaceFlags = 0;
  uint32_t dwCopyProtectFlags = 0;
  uint32_t dwPictAspectRatioX = 0;
  uint32_t dwPictAspectRatioY = 0;
  uint32_t dwControlFlags = 0;  // dwReserved1 in older headers
  uint32_t dwReserved2 = 0;
  BITMAPINFOHEADER bmiHeader;
};

// Published packed to 18 bytes; this struct has the same offsets and two bytes of tail
// padding, which FormatBlockSize leaves out.
struct WAVEFORMATEX {
  uint16_t wFormatTag = 0;
  uint16_t nChannels = 0;
  uint32_t nSamplesPerSec = 0;
  uint32_t nAvgBytesPerSec = 0;
  uint16_t nBlockAlign = 0;
  uint16_t wBitsPerSample = 0;
  uint16_t cbSize = 0;
};

inline constexpr uint16_t WAVE_FORMAT_PCM = 1;

// The published size of each block in bytes.
template <class Block>
inline constexpr std::size_t FormatBlockSize = sizeof(Block);
template <>
inline constexpr std::size_t FormatBlockSize<WAVEFORMATEX> = 18;

static_assert(sizeof(RECT) == 16);
static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(offsetof(BITMAPINFOHEADER, biCompression) == 16);
static_assert(offsetof(BITMAPINFOHEADER, biClrImportant) == 36);
static_assert(FormatBlockSize<VIDEOINFOHEADER> == 88);
static_assert(offsetof(VIDEOINFOHEADER, dwBitRate) == 32);
static_assert(offsetof(VIDEOINFOHEADER, AvgTimePerFrame) == 40);
static_assert(offsetof(VIDEOINFOHEADER, bmiHeader) == 48);
static_assert(FormatBlockSize<VIDEOINFOHEADER2> == 112);
static_assert(offsetof(VIDEOINFOHEADER2, dwInterlaceFlags) == 48);
static_assert(offsetof(VIDEOINFOHEADER2, dwPictAspectRatioX) == 56);
static_assert(offsetof(VIDEOINFOHEADER2, bmiHeader) == 72);
static_assert(FormatBlockSize<WAVEFORMATEX> == 18);
static_assert(offsetof(WAVEFORMATEX, nSamplesPerSec) == 4);
static_assert(offsetof(WAVEFORMATEX, nBlockAlign) == 12);
static_assert(offsetof(WAVEFORMATEX, cbSize) == 16);

// Bytes of an uncompressed picture: rows of biWidth * biBitCount / 8 bytes, each rounded up
// to a multiple of 4, times |biHeight|, whatever the compression (packed YUV included).
uint32_t GetBitmapSize(const BITMAPINFOHEADER& header);

// The subtype an uncompressed header describes: MEDIASUBTYPE_RGB8/RGB555/RGB565/RGB24/RGB32
// for BI_RGB and BI_BITFIELDS (16 bits with BI_BITFIELDS is taken as RGB565), else the
// four-character code's subtype.
GUID GetBitmapSubtype(const BITMAPINFOHEADER& header);

}  // namespace korvalin::host
