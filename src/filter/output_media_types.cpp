#include "filter/output_media_types.h"

#include <cstdlib>

#include "filter/video_format_conversion.h"
#include "host/media_guids.h"

namespace korvalin {

using namespace host;

namespace {

struct OfferedLayout {
  uint32_t compression;
  uint16_t bitCount;
  uint32_t bitRateFactor;
};

constexpr OfferedLayout kLayouts[] = {
    {0x32595559, 16, 1},   // "YUY2"
    {BI_RGB, 32, 2},       // RGB32
    {BI_BITFIELDS, 16, 1}  // RGB565, with its colour masks after the header
};
constexpr uint32_t kRgb565Masks[] = {0xF800, 0x07E0, 0x001F};

VIDEOINFOHEADER OutputHeader(const OfferedLayout& layout, const VideoFormat& input, int32_t width,
                             int32_t height) {
  VIDEOINFOHEADER vih;  // zeroed, rectangles empty
  vih.dwBitRate = input.dwBitRate * layout.bitRateFactor;
  vih.dwBitErrorRate = input.dwBitErrorRate;
  vih.AvgTimePerFrame = input.AvgTimePerFrame;
  vih.bmiHeader.biSize = 40;
  vih.bmiHeader.biPlanes = 1;
  vih.bmiHeader.biWidth = width;
  vih.bmiHeader.biHeight = height;
  vih.bmiHeader.biBitCount = layout.bitCount;
  vih.bmiHeader.biCompression = layout.compression;
  vih.bmiHeader.biSizeImage = GetBitmapSize(vih.bmiHeader);
  return vih;
}

// The compensated picture aspect tells the renderer the display shape of the framed picture.
HRESULT ToOverlayType(AM_MEDIA_TYPE* type, const PictureGeometry& geometry,
                      const VideoFormat& input) {
  const HRESULT hr = ConvertVideoInfoToVideoInfo2(type);
  if (FAILED(hr)) return hr;
  VIDEOINFOHEADER2 vih2;
  if (!ReadFormatBlock(*type, &vih2)) return E_FAIL;
  vih2.dwPictAspectRatioY = static_cast<uint32_t>(
      geometry.CompensateHeight(static_cast<int32_t>(vih2.dwPictAspectRatioY)));
  vih2.dwInterlaceFlags = input.dwInterlaceFlags;
  std::memcpy(type->format.data(), &vih2, FormatBlockSize<VIDEOINFOHEADER2>);
  return S_OK;
}

}  // namespace

HRESULT OfferOutputType(int position, const AM_MEDIA_TYPE& input, const PictureGeometry& geometry,
                        bool overlay, AM_MEDIA_TYPE* type) {
  if (position < 0) return E_INVALIDARG;
  if (position > 2 || (overlay && position > 0)) return VFW_S_NO_MORE_ITEMS;
  if (type == nullptr) return E_POINTER;

  const VideoFormat in = ToVideoFormat(input);
  const int32_t rows = std::abs(in.biHeight);
  const int32_t copyWidth = geometry.CopyWidth(in.biWidth, rows);
  const int32_t height = geometry.OutputHeight(copyWidth, rows);
  const int32_t width = copyWidth + 2 * geometry.BorderWidth(copyWidth);

  const OfferedLayout& layout = kLayouts[position];
  const VIDEOINFOHEADER vih = OutputHeader(layout, in, width, height);
  *type = AM_MEDIA_TYPE{};
  type->majortype = MEDIATYPE_Video;
  type->formattype = FORMAT_VideoInfo;
  type->bTemporalCompression = false;
  type->bFixedSizeSamples = true;
  type->subtype = GetBitmapSubtype(vih.bmiHeader);
  type->lSampleSize = vih.bmiHeader.biSizeImage;
  if (layout.compression == BI_BITFIELDS) {
    SetFormatBlock(type, vih, sizeof kRgb565Masks);
    std::memcpy(type->format.data() + FormatBlockSize<VIDEOINFOHEADER>, kRgb565Masks,
                sizeof kRgb565Masks);
  } else {
    SetFormatBlock(type, vih);
  }
  return overlay ? ToOverlayType(type, geometry, in) : S_OK;
}

}  // namespace korvalin
