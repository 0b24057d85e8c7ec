#include "host/media_type.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "host/media_guids.h"

namespace korvalin::host {

HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE& src) {
  if (!target) return E_POINTER;
  if (target == &src) return S_OK;
  try {
    *target = src;
  } catch (const std::bad_alloc&) {
    target->format.clear();
    return E_OUTOFMEMORY;
  }
  return S_OK;
}

void FreeMediaType(AM_MEDIA_TYPE& type) {
  std::vector<uint8_t>().swap(type.format);
}

MediaTypePtr CreateMediaType(const AM_MEDIA_TYPE& src) {
  MediaTypePtr copy(new (std::nothrow) AM_MEDIA_TYPE);
  if (copy && FAILED(CopyMediaType(copy.get(), src))) copy.reset();
  return copy;
}

bool MatchesPartialType(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE& partial) {
  auto matches = [](const GUID& value, const GUID& wanted) {
    return wanted == GUID_NULL || value == wanted;
  };
  return matches(type.majortype, partial.majortype) && matches(type.subtype, partial.subtype) &&
         matches(type.formattype, partial.formattype);
}

bool MediaTypesEqual(const AM_MEDIA_TYPE& a, const AM_MEDIA_TYPE& b) {
  return a.majortype == b.majortype && a.subtype == b.subtype && a.formattype == b.formattype &&
         a.format == b.format;
}

HRESULT ConvertVideoInfoToVideoInfo2(AM_MEDIA_TYPE* type) {
  VIDEOINFOHEADER vih;
  if (!type || type->formattype != FORMAT_VideoInfo || !ReadFormatBlock(*type, &vih)) {
    return E_INVALIDARG;
  }
  VIDEOINFOHEADER2 vih2;
  vih2.rcSource = vih.rcSource;
  vih2.rcTarget = vih.rcTarget;
  vih2.dwBitRate = vih.dwBitRate;
  vih2.dwBitErrorRate = vih.dwBitErrorRate;
  vih2.AvgTimePerFrame = vih.AvgTimePerFrame;
  vih2.bmiHeader = vih.bmiHeader;
  vih2.dwPictAspectRatioX = static_cast<uint32_t>(std::abs(vih.bmiHeader.biWidth));
  vih2.dwPictAspectRatioY = static_cast<uint32_t>(std::abs(vih.bmiHeader.biHeight));

  const std::vector<uint8_t> trailer(type->format.begin() + FormatBlockSize<VIDEOINFOHEADER>,
                                     type->format.end());
  SetFormatBlock(type, vih2, trailer.size());
  std::copy(trailer.begin(), trailer.end(),
            type->format.begin() + FormatBlockSize<VIDEOINFOHEADER2>);
  type->formattype = FORMAT_VideoInfo2;
  return S_OK;
}

}  // namespace korvalin::host
