#include "filter/video_format_conversion.h"

#include <cstddef>
#include <cstring>

#include "host/media_guids.h"

namespace korvalin {

using namespace host;

namespace {

Rect ToRect(const RECT& r) {
  return Rect{r.left, r.top, r.right, r.bottom};
}

// The fields both video blocks have, under the same names.
template <class Block>
void CopySharedFields(const Block& block, VideoFormat* format) {
  format->rcSource = ToRect(block.rcSource);
  format->rcTarget = ToRect(block.rcTarget);
  format->dwBitRate = block.dwBitRate;
  format->dwBitErrorRate = block.dwBitErrorRate;
  format->AvgTimePerFrame = block.AvgTimePerFrame;
  const BITMAPINFOHEADER& header = block.bmiHeader;
  format->biSize = header.biSize;
  format->biWidth = header.biWidth;
  format->biHeight = header.biHeight;
  format->biPlanes = header.biPlanes;
  format->biBitCount = header.biBitCount;
  format->biCompression = header.biCompression;
  format->biSizeImage = header.biSizeImage;
  format->biXPelsPerMeter = header.biXPelsPerMeter;
  format->biYPelsPerMeter = header.biYPelsPerMeter;
  format->biClrUsed = header.biClrUsed;
  format->biClrImportant = header.biClrImportant;
}

// The bytes of the biHeight field of either block, or null when the block is too short.
uint8_t* HeightField(AM_MEDIA_TYPE* type) {
  constexpr std::size_t kHeight = offsetof(BITMAPINFOHEADER, biHeight);
  if (type->formattype == FORMAT_VideoInfo &&
      type->format.size() >= FormatBlockSize<VIDEOINFOHEADER>) {
    return type->format.data() + offsetof(VIDEOINFOHEADER, bmiHeader) + kHeight;
  }
  if (type->formattype == FORMAT_VideoInfo2 &&
      type->format.size() >= FormatBlockSize<VIDEOINFOHEADER2>) {
    return type->format.data() + offsetof(VIDEOINFOHEADER2, bmiHeader) + kHeight;
  }
  return nullptr;
}

}  // namespace

VideoFormat ToVideoFormat(const AM_MEDIA_TYPE& type) {
  VideoFormat format;
  format.biSize = 0;
  format.biPlanes = 0;
  if (type.formattype == FORMAT_VideoInfo) {
    VIDEOINFOHEADER vih;
    if (!ReadFormatBlock(type, &vih)) return format;
    CopySharedFields(vih, &format);
    format.dwPictAspectRatioX = static_cast<uint32_t>(vih.bmiHeader.biWidth);
    format.dwPictAspectRatioY = static_cast<uint32_t>(vih.bmiHeader.biHeight);
    return format;
  }
  VIDEOINFOHEADER2 vih2;
  if (!ReadFormatBlock(type, &vih2)) return format;
  CopySharedFields(vih2, &format);
  format.dwInterlaceFlags = vih2.dwInterlaceFlags;
  format.dwCopyProtectFlags = vih2.dwCopyProtectFlags;
  format.dwPictAspectRatioX = vih2.dwPictAspectRatioX;
  format.dwPictAspectRatioY = vih2.dwPictAspectRatioY;
  format.dwControlFlags = vih2.dwControlFlags;
  format.dwReserved2 = vih2.dwReserved2;
  return format;
}

HRESULT MakeTopDown(AM_MEDIA_TYPE* type) {
  if (type == nullptr) return E_POINTER;
  uint8_t* height = HeightField(type);
  if (height == nullptr) return E_FAIL;
  int32_t value;
  std::memcpy(&value, height, sizeof value);
  value = value < 0 ? value : -value;
  std::memcpy(height, &value, sizeof value);
  return S_OK;
}

bool OutputPixelFormat(const GUID& subtype, PixelFormat* format) {
  if (subtype == MEDIASUBTYPE_YUY2) {
    *format = PixelFormat::YUY2;
  } else if (subtype == MEDIASUBTYPE_RGB32) {
    *format = PixelFormat::RGB32;
  } else if (subtype == MEDIASUBTYPE_RGB565) {
    *format = PixelFormat::RGB565;
  } else {
    return false;
  }
  return true;
}

}  // namespace korvalin
