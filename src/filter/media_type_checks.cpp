#include "filter/media_type_checks.h"

#include <cstdlib>

#include "filter/video_format_conversion.h"
#include "host/media_guids.h"

namespace korvalin {

using namespace host;

namespace {

constexpr std::size_t kMinimumBlockSize = FormatBlockSize<VIDEOINFOHEADER>;

bool HasSquarePixels(const VideoFormat& format) {
  const int64_t a = std::llabs(int64_t{format.biWidth} * format.dwPictAspectRatioY);
  const int64_t b = std::llabs(int64_t{format.biHeight} * format.dwPictAspectRatioX);
  return a == b;
}

}  // namespace

HRESULT CheckInputType(const AM_MEDIA_TYPE& type, bool overlay) {
  if (type.formattype == FORMAT_VideoInfo2) {
    if (type.format.size() < FormatBlockSize<VIDEOINFOHEADER2>) return VFW_E_TYPE_NOT_ACCEPTED;
    if (!overlay && !HasSquarePixels(ToVideoFormat(type))) return VFW_E_TYPE_NOT_ACCEPTED;
  } else if (type.formattype == FORMAT_VideoInfo) {
    if (type.format.size() < FormatBlockSize<VIDEOINFOHEADER>) return VFW_E_TYPE_NOT_ACCEPTED;
  } else {
    return VFW_E_TYPE_NOT_ACCEPTED;
  }
  if (type.subtype != MEDIASUBTYPE_YUY2) return VFW_E_TYPE_NOT_ACCEPTED;
  return ToVideoFormat(type).biBitCount == 16 ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CheckTransform(const AM_MEDIA_TYPE& input, const AM_MEDIA_TYPE& output, bool overlay) {
  const HRESULT hr = CheckInputType(input, overlay);
  if (FAILED(hr)) return hr;
  const GUID& wanted = overlay ? FORMAT_VideoInfo2 : FORMAT_VideoInfo;
  if (output.formattype != wanted || input.format.size() < kMinimumBlockSize ||
      output.format.size() < kMinimumBlockSize) {
    return E_INVALIDARG;
  }
  PixelFormat pixels;
  return OutputPixelFormat(output.subtype, &pixels) ? S_OK : E_FAIL;
}

}  // namespace korvalin
