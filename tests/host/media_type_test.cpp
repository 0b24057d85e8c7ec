#include "host/media_type.h"

#include <gtest/gtest.h>

#include <cstring>

#include "host/format_blocks.h"
#include "host/media_guids.h"

namespace korvalin::host {
namespace {

uint32_t U32At(const AM_MEDIA_TYPE& type, std::size_t offset) {
  uint32_t value;
  std::memcpy(&value, type.format.data() + offset, 4);
  return value;
}

// The VIDEOINFOHEADER block is 88 bytes with the published field offsets, whatever the
// struct's own layout would suggest.
TEST(FormatBlockTest, VideoInfoHeaderBytesSitAtPublishedOffsets) {
  VIDEOINFOHEADER vih;
  vih.rcSource = {1, 2, 3, 4};
  vih.dwBitRate = 0x11223344;
  vih.AvgTimePerFrame = 400000;
  vih.bmiHeader.biWidth = 720;
  vih.bmiHeader.biHeight = -576;
  vih.bmiHeader.biBitCount = 16;
  vih.bmiHeader.biCompression = MEDIASUBTYPE_YUY2.Data1;
  vih.bmiHeader.biClrImportant = 0xCAFE;
  AM_MEDIA_TYPE type;
  SetFormatBlock(&type, vih, 12);
  ASSERT_EQ(type.cbFormat(), 100u);
  EXPECT_EQ(U32At(type, 4), 2u);
  EXPECT_EQ(U32At(type, 32), 0x11223344u);
  EXPECT_EQ(U32At(type, 40), 400000u);
  EXPECT_EQ(U32At(type, 48), 40u);  // biSize
  EXPECT_EQ(U32At(type, 52), 720u);
  EXPECT_EQ(static_cast<int32_t>(U32At(type, 56)), -576);
  EXPECT_EQ(U32At(type, 64), 0x32595559u);  // "YUY2"
  EXPECT_EQ(U32At(type, 84), 0xCAFEu);

  VIDEOINFOHEADER back;
  ASSERT_TRUE(ReadFormatBlock(type, &back));
  EXPECT_EQ(back.bmiHeader.biHeight, -576);
  type.format.resize(87);
  EXPECT_FALSE(ReadFormatBlock(type, &back));
}

TEST(FormatBlockTest, BitmapSizeRoundsRowsToFourBytes) {
  struct Case {
    int32_t width, height;
    uint16_t bits;
    uint32_t size;
  };
  const Case cases[] = {{720, 576, 16, 829440}, {3, 2, 24, 24}, {3, -2, 32, 24}, {5, 1, 16, 12}};
  for (const Case& c : cases) {
    BITMAPINFOHEADER header;
    header.biWidth = c.width;
    header.biHeight = c.height;
    header.biBitCount = c.bits;
    EXPECT_EQ(GetBitmapSize(header), c.size) << c.width << "x" << c.height;
  }
}

TEST(MediaTypeTest, CopyOwnsItsBlockAndConversionKeepsFields) {
  VIDEOINFOHEADER vih;
  vih.AvgTimePerFrame = 417083;
  vih.bmiHeader.biWidth = 720;
  vih.bmiHeader.biHeight = 576;
  AM_MEDIA_TYPE type;
  type.majortype = MEDIATYPE_Video;
  type.formattype = FORMAT_VideoInfo;
  SetFormatBlock(&type, vih, 12);
  type.format[90] = 0x7E;  // a mask after the header

  MediaTypePtr copy = CreateMediaType(type);
  ASSERT_TRUE(copy);
  EXPECT_TRUE(MediaTypesEqual(*copy, type));
  FreeMediaType(type);
  EXPECT_EQ(type.cbFormat(), 0u);
  EXPECT_EQ(copy->cbFormat(), 100u);

  ASSERT_EQ(ConvertVideoInfoToVideoInfo2(copy.get()), S_OK);
  EXPECT_EQ(copy->formattype, FORMAT_VideoInfo2);
  ASSERT_EQ(copy->cbFormat(), 124u);
  EXPECT_EQ(copy->format[114], 0x7E);
  VIDEOINFOHEADER2 vih2;
  ASSERT_TRUE(ReadFormatBlock(*copy, &vih2));
  EXPECT_EQ(vih2.AvgTimePerFrame, 417083);
  EXPECT_EQ(vih2.dwPictAspectRatioX, 720u);
  EXPECT_EQ(vih2.dwPictAspectRatioY, 576u);
  EXPECT_EQ(vih2.bmiHeader.biWidth, 720);
  EXPECT_EQ(ConvertVideoInfoToVideoInfo2(copy.get()), E_INVALIDARG);
}

}  // namespace
}  // namespace korvalin::host
