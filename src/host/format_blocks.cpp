#include "host/format_blocks.h"

#include <cstdlib>

#include "host/media_guids.h"

namespace korvalin::host {

uint32_t GetBitmapSize(const BITMAPINFOHEADER& header) {
  const uint64_t rowBits =
      static_cast<uint64_t>(std::abs(static_cast<int64_t>(header.biWidth))) * header.biBitCount;
  const uint64_t rowBytes = ((rowBits + 31) / 32) * 4;
  return static_cast<uint32_t>(rowBytes * std::abs(static_cast<int64_t>(header.biHeight)));
}

GUID GetBitmapSubtype(const BITMAPINFOHEADER& header) {
  if (header.biCompression != BI_RGB && header.biCompression != BI_BITFIELDS) {
    return FourCCMap(header.biCompression);
  }
  switch (header.biBitCount) {
    case 8:
      return MEDIASUBTYPE_RGB8;
    case 16:
      return header.biCompression == BI_BITFIELDS ? MEDIASUBTYPE_RGB565 : MEDIASUBTYPE_RGB555;
    case 24:
      return MEDIASUBTYPE_RGB24;
    case 32:
      return MEDIASUBTYPE_RGB32;
    default:
      return GUID_NULL;
  }
}

}  // namespace korvalin::host
