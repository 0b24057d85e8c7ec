#include <gtest/gtest.h>

#include "filter/graph_search.h"
#include "filter/media_type_checks.h"
#include "filter/output_media_types.h"
#include "filter_harness.h"

namespace korvalin::testing {
namespace {

AM_MEDIA_TYPE Changed(AM_MEDIA_TYPE type, GUID subtype, GUID formattype = FORMAT_VideoInfo,
                      uint16_t bits = 16) {
  type.subtype = subtype;
  type.formattype = formattype;
  VIDEOINFOHEADER vih;
  ReadFormatBlock(type, &vih);
  vih.bmiHeader.biBitCount = bits;
  SetFormatBlock(&type, vih);
  return type;
}

TEST(MediaTypeChecksTest, InputAndTransformRefusals) {
  const AM_MEDIA_TYPE yuy2 = Yuy2Type(720, 576), vih2 = Yuy2Type2(720, 576, 4, 3);
  const AM_MEDIA_TYPE rgb32 = Changed(yuy2, MEDIASUBTYPE_RGB32);
  const struct {
    const char* name;
    AM_MEDIA_TYPE type;
    HRESULT overlayOff, overlayOn;
  } inputs[] = {
      {"yuy2", yuy2, S_OK, S_OK},
      {"square vih2", Yuy2Type2(720, 576, 720, 576), S_OK, S_OK},
      {"16:9 vih2", Yuy2Type2(720, 576, 16, 9), VFW_E_TYPE_NOT_ACCEPTED, S_OK},
      {"rgb32", rgb32, VFW_E_TYPE_NOT_ACCEPTED, VFW_E_TYPE_NOT_ACCEPTED},
      {"12 bits", Changed(yuy2, MEDIASUBTYPE_YUY2, FORMAT_VideoInfo, 12),
       VFW_E_TYPE_NOT_ACCEPTED, VFW_E_TYPE_NOT_ACCEPTED},
      {"no format", Changed(yuy2, MEDIASUBTYPE_YUY2, FORMAT_None), VFW_E_TYPE_NOT_ACCEPTED,
       VFW_E_TYPE_NOT_ACCEPTED},
  };
  for (const auto& c : inputs) {
    EXPECT_EQ(CheckInputType(c.type, false), c.overlayOff) << c.name;
    EXPECT_EQ(CheckInputType(c.type, true), c.overlayOn) << c.name;
  }
  AM_MEDIA_TYPE shortBlock = yuy2;
  shortBlock.format.resize(80);  // the block must be the full 88 bytes
  const struct {
    const char* name;
    AM_MEDIA_TYPE out;
    bool overlay;
    HRESULT expected;
  } outputs[] = {
      {"yuy2", yuy2, false, S_OK},
      {"rgb32", rgb32, false, S_OK},
      {"rgb565", Changed(yuy2, MEDIASUBTYPE_RGB565), false, S_OK},
      {"rgb24", Changed(yuy2, MEDIASUBTYPE_RGB24), false, E_FAIL},
      {"80-byte block", shortBlock, false, E_INVALIDARG},
      {"vih2 without overlay", vih2, false, E_INVALIDARG},
      {"vih with overlay", yuy2, true, E_INVALIDARG},
      {"vih2 with overlay", vih2, true, S_OK},
  };
  for (const auto& c : outputs) EXPECT_EQ(CheckTransform(yuy2, c.out, c.overlay), c.expected) << c.name;
  EXPECT_EQ(CheckTransform(rgb32, yuy2, false), VFW_E_TYPE_NOT_ACCEPTED);
}

TEST(OfferOutputTypeTest, ThreeTypesWithoutOverlayOneWithIt) {
  const struct {
    bool overlay;
    std::vector<GUID> subtypes;
    std::vector<uint32_t> blockSizes;
  } cases[] = {
      {false, {MEDIASUBTYPE_YUY2, MEDIASUBTYPE_RGB32, MEDIASUBTYPE_RGB565}, {88, 88, 100}},
      {true, {MEDIASUBTYPE_YUY2}, {112}},
  };
  for (const auto& c : cases) {
    Settings settings = Plain(c.overlay);
    settings.AspectComp = c.overlay ? 1 : 0;  // PAL shown as 4:3: 576 rows look like 540
    const PictureGeometry geometry(settings, 0, false);
    std::vector<GUID> subtypes;
    std::vector<uint32_t> blockSizes;
    AM_MEDIA_TYPE type;
    for (int position = 0;
         OfferOutputType(position, Yuy2Type(720, 576), geometry, c.overlay, &type) == S_OK;
         ++position) {
      const VideoFormat format = ToVideoFormat(type);
      EXPECT_EQ(format.biWidth, 720);
      EXPECT_EQ(type.lSampleSize, format.biSizeImage);
      EXPECT_EQ(type.formattype, c.overlay ? FORMAT_VideoInfo2 : FORMAT_VideoInfo);
      if (c.overlay) {
        EXPECT_EQ(format.dwPictAspectRatioY, 540u);
      }
      EXPECT_EQ(format.biBitCount, type.subtype == MEDIASUBTYPE_RGB32 ? 32 : 16);
      subtypes.push_back(type.subtype);
      blockSizes.push_back(type.cbFormat());
    }
    EXPECT_EQ(subtypes, c.subtypes);
    EXPECT_EQ(blockSizes, c.blockSizes);
    EXPECT_EQ(OfferOutputType(-1, Yuy2Type(720, 576), geometry, c.overlay, &type), E_INVALIDARG);
  }
}

TEST(VideoFilterConnectionTest, InputReconnectionReconnectsTheOutput) {
  FilterPipeline pipeline(Plain(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Connect(), S_OK);
  ASSERT_EQ(pipeline.graph->Disconnect(pipeline.source->Pin()), S_OK);
  ASSERT_EQ(pipeline.graph->Disconnect(pipeline.filter->GetPin(0)), S_OK);
  pipeline.source->Pin()->type_ = Yuy2Type(32, 8);
  ASSERT_EQ(
      pipeline.graph->ConnectDirect(pipeline.source->Pin(), pipeline.filter->GetPin(0), nullptr),
      S_OK);
  ASSERT_TRUE(pipeline.filter->GetPin(1)->IsConnected());
  const VideoFormat out = ToVideoFormat(pipeline.sink->InPin()->CurrentMediaType());
  EXPECT_EQ(out.biWidth, 32);
  EXPECT_EQ(out.biHeight, 8);
}

TEST(VideoFilterConnectionTest, SecondCopyBelowTheFirstRefusesToConnect) {
  FilterPipeline pipeline(Plain(), Yuy2Type(64, 4));
  ASSERT_EQ(
      pipeline.graph->ConnectDirect(pipeline.source->Pin(), pipeline.filter->GetPin(0), nullptr),
      S_OK);
  const ComPtr<VideoFilter> second = MakeCom<VideoFilter>(Plain());
  ASSERT_EQ(pipeline.graph->AddFilter(second.Get(), u"Korvalin"), VFW_S_DUPLICATE_NAME);
  EXPECT_TRUE(FAILED(
      pipeline.graph->ConnectDirect(pipeline.filter->GetPin(1), second->GetPin(0), nullptr)));
  EXPECT_FALSE(second->GetPin(0)->IsConnected());
  EXPECT_FALSE(IsFilterUpstream(pipeline.filter->GetPin(1), u"Sink"));
  EXPECT_FALSE(NameMatches(u"Korvalin2", u"Korvalin"));
}

}  // namespace
}  // namespace korvalin::testing
