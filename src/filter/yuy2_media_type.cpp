#include "filter/yuy2_media_type.h"

#include "host/media_guids.h"

namespace korvalin {

using namespace host;

AM_MEDIA_TYPE Yuy2VideoType(int32_t width, int32_t height, REFERENCE_TIME avgTimePerFrame) {
  VIDEOINFOHEADER vih;
  vih.AvgTimePerFrame = avgTimePerFrame;
  vih.bmiHeader.biWidth = width;
  vih.bmiHeader.biHeight = height;
  vih.bmiHeader.biBitCount = 16;
  vih.bmiHeader.biCompression = MEDIASUBTYPE_YUY2.Data1;
  vih.bmiHeader.biSizeImage = GetBitmapSize(vih.bmiHeader);
  AM_MEDIA_TYPE type;
  type.majortype = MEDIATYPE_Video;
  type.subtype = MEDIASUBTYPE_YUY2;
  type.formattype = FORMAT_VideoInfo;
  type.lSampleSize = vih.bmiHeader.biSizeImage;
  SetFormatBlock(&type, vih);
  return type;
}

}  // namespace korvalin
