#include <gtest/gtest.h>

#include "filter/graph_search.h"
#include "filter/media_type_checks.h"
#include "filter/output_media_types.h"
#include "filter/video_format_conversion.h"
#include "filter_harness.h"

namespace korvalin::testing {
namespace {

Settings Plain(bool overlay = false) {
  Settings settings{Settings::DefaultsOnly{}};
  settings.bFill2 = 0;
  settings.Overlay = overlay ? 1 : 0;
  return settings;
}

AM_MEDIA_TYPE WithBitCount(AM_MEDIA_TYPE type, uint16_t bits) {
  VIDEOINFOHEADER vih;
  ReadFormatBlock(type, &vih);
  vih.bmiHeader.biBitCount = bits;
  SetFormatBlock(&type, vih);
  return type;
}

AM_MEDIA_TYPE WithSubtype(AM_MEDIA_TYPE type, GUID subtype) {
  type.subtype = subtype;
  return type;
}

AM_MEDIA_TYPE WithFormatType(AM_MEDIA_TYPE type, GUID formattype) {
  type.formattype = formattype;
  return type;
}

TEST(CheckInputTypeTest, AcceptsOnlyPackedYuy2WithSquarePixelsUnlessOverlay) {
  const struct {
    const char* name;
    AM_MEDIA_TYPE type;
    HRESULT overlayOff, overlayOn;
  } cases[] = {
      {"yuy2", Yuy2Type(720, 576), S_OK, S_OK},
      {"yuy2 square vih2", Yuy2Type2(720, 576, 720, 576), S_OK, S_OK},
      {"16:9 vih2", Yuy2Type2(720, 576, 16, 9), VFW_E_TYPE_NOT_ACCEPTED, S_OK},
      {"rgb32", WithSubtype(Yuy2Type(720, 576), MEDIASUBTYPE_RGB32), VFW_E_TYPE_NOT_ACCEPTED,
       VFW_E_TYPE_NOT_ACCEPTED},
      {"12 bits", WithBitCount(Yuy2Type(720, 576), 12), VFW_E_TYPE_NOT_ACCEPTED,
       VFW_E_TYPE_NOT_ACCEPTED},
      {"no format", WithFormatType(Yuy2Type(720, 576), FORMAT_None), VFW_E_TYPE_NOT_ACCEPTED,
       VFW_E_TYPE_NOT_ACCEPTED},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CheckInputType(c.type, false), c.overlayOff) << c.name;
    EXPECT_EQ(CheckInputType(c.type, true), c.overlayOn) << c.name;
  }
}

TEST(CheckTransformTest, OutputBlockFormatAndSubtype) {
  const AM_MEDIA_TYPE in = Yuy2Type(720, 576);
  AM_MEDIA_TYPE shortBlock = Yuy2Type(720, 576);
  shortBlock.format.resize(80);
  const struct {
    const char* name;
    AM_MEDIA_TYPE out;
    bool overlay;
    HRESULT expected;
  } cases[] = {
      {"yuy2", Yuy2Type(720, 576), false, S_OK},
      {"rgb32", WithSubtype(Yuy2Type(720, 576), MEDIASUBTYPE_RGB32), false, S_OK},
      {"rgb565", WithSubtype(Yuy2Type(720, 576), MEDIASUBTYPE_RGB565), false, S_OK},
      {"rgb24", WithSubtype(Yuy2Type(720, 576), MEDIASUBTYPE_RGB24), false, E_FAIL},
      {"80-byte block", shortBlock, false, E_INVALIDARG},
      {"vih without overlay", Yuy2Type2(720, 576, 4, 3), false, E_INVALIDARG},
      {"vih with overlay", Yuy2Type(720, 576), true, E_INVALIDARG},
      {"vih2 with overlay", Yuy2Type2(720, 576, 4, 3), true, S_OK},
  };
  for (const auto& c : cases) EXPECT_EQ(CheckTransform(in, c.out, c.overlay), c.expected) << c.name;
  EXPECT_EQ(CheckTransform(WithSubtype(in, MEDIASUBTYPE_RGB32), Yuy2Type(720, 576), false),
            VFW_E_TYPE_NOT_ACCEPTED);
}

TEST(MakeTopDownTest, NegatesHeightOfVideoBlocksOnly) {
  AM_MEDIA_TYPE vih = Yuy2Type(8, 6);
  ASSERT_EQ(MakeTopDown(&vih), S_OK);
  EXPECT_EQ(ToVideoFormat(vih).biHeight, -6);
  ASSERT_EQ(MakeTopDown(&vih), S_OK);
  EXPECT_EQ(ToVideoFormat(vih).biHeight, -6);
  AM_MEDIA_TYPE vih2 = Yuy2Type2(8, 6, 4, 3);
  ASSERT_EQ(MakeTopDown(&vih2), S_OK);
  EXPECT_EQ(ToVideoFormat(vih2).biHeight, -6);
  AM_MEDIA_TYPE none = WithFormatType(Yuy2Type(8, 6), FORMAT_None);
  EXPECT_EQ(MakeTopDown(&none), E_FAIL);
}

TEST(ToVideoFormatTest, VideoInfoGivesSquarePictureAspect) {
  const VideoFormat format = ToVideoFormat(Yuy2Type(720, 576));
  EXPECT_EQ(format.dwPictAspectRatioX, 720u);
  EXPECT_EQ(format.dwPictAspectRatioY, 576u);
  EXPECT_EQ(format.AvgTimePerFrame, kFrameTicks);
  EXPECT_EQ(format.biBitCount, 16);
  const VideoFormat wide = ToVideoFormat(Yuy2Type2(720, 576, 16, 9));
  EXPECT_EQ(wide.dwPictAspectRatioX, 16u);
  EXPECT_EQ(wide.dwPictAspectRatioY, 9u);
}

struct Offered {
  GUID formattype, subtype;
  uint32_t blockSize, compression;
  uint16_t bitCount;
};

std::vector<Offered> OfferedTypes(bool overlay) {
  const Settings settings = Plain(overlay);
  const PictureGeometry geometry(settings, 0, false);
  std::vector<Offered> offered;
  for (int position = 0;; ++position) {
    AM_MEDIA_TYPE type;
    const HRESULT hr = OfferOutputType(position, Yuy2Type(720, 576), geometry, overlay, &type);
    if (hr != S_OK) {
      EXPECT_EQ(hr, VFW_S_NO_MORE_ITEMS);
      break;
    }
    const VideoFormat format = ToVideoFormat(type);
    EXPECT_EQ(format.biWidth, 720);
    EXPECT_EQ(format.biHeight, 576);
    EXPECT_EQ(type.lSampleSize, format.biSizeImage);
    offered.push_back(
        {type.formattype, type.subtype, type.cbFormat(), format.biCompression, format.biBitCount});
  }
  return offered;
}

TEST(OfferOutputTypeTest, ThreeTypesWithoutOverlay) {
  const std::vector<Offered> offered = OfferedTypes(false);
  ASSERT_EQ(offered.size(), 3u);
  EXPECT_EQ(offered[0].subtype, MEDIASUBTYPE_YUY2);
  EXPECT_EQ(offered[0].blockSize, 88u);
  EXPECT_EQ(offered[1].subtype, MEDIASUBTYPE_RGB32);
  EXPECT_EQ(offered[1].bitCount, 32);
  EXPECT_EQ(offered[1].compression, BI_RGB);
  EXPECT_EQ(offered[2].subtype, MEDIASUBTYPE_RGB565);
  EXPECT_EQ(offered[2].blockSize, 100u);
  EXPECT_EQ(offered[2].compression, BI_BITFIELDS);
  for (const Offered& o : offered) EXPECT_EQ(o.formattype, FORMAT_VideoInfo);
}

TEST(OfferOutputTypeTest, OneCompensatedVideoInfo2WithOverlay) {
  const std::vector<Offered> offered = OfferedTypes(true);
  ASSERT_EQ(offered.size(), 1u);
  EXPECT_EQ(offered[0].formattype, FORMAT_VideoInfo2);
  EXPECT_EQ(offered[0].subtype, MEDIASUBTYPE_YUY2);
  Settings settings = Plain(true);
  settings.AspectComp = 1;  // PAL clip shown as 4:3: 576 rows look like 540
  AM_MEDIA_TYPE type;
  ASSERT_EQ(
      OfferOutputType(0, Yuy2Type(720, 576), PictureGeometry(settings, 0, false), true, &type),
      S_OK);
  const VideoFormat format = ToVideoFormat(type);
  EXPECT_EQ(format.dwPictAspectRatioX, 720u);
  EXPECT_EQ(format.dwPictAspectRatioY, 540u);
  EXPECT_EQ(
      OfferOutputType(-1, Yuy2Type(720, 576), PictureGeometry(settings, 0, false), true, &type),
      E_INVALIDARG);
}

TEST(NameMatchesTest, ExactOrFollowedByBlank) {
  EXPECT_TRUE(NameMatches(u"Korvalin", u"Korvalin"));
  EXPECT_TRUE(NameMatches(u"Korvalin 0001", u"Korvalin"));
  EXPECT_FALSE(NameMatches(u"Korvalin2", u"Korvalin"));
  EXPECT_FALSE(NameMatches(u"Korva", u"Korvalin"));
  EXPECT_FALSE(NameMatches(u"", u"Korvalin"));
}

TEST(VideoFilterConnectionTest, TypeOperationsNeedAConnectedInput) {
  const ComPtr<VideoFilter> filter = MakeCom<VideoFilter>(Plain());
  AM_MEDIA_TYPE type;
  EXPECT_EQ(filter->GetMediaType(0, &type), E_UNEXPECTED);
  const ComPtr<MemAllocator> allocator = MakeCom<MemAllocator>();
  ALLOCATOR_PROPERTIES request;
  EXPECT_EQ(filter->DecideBufferSize(allocator.Get(), &request), E_UNEXPECTED);
  EXPECT_EQ(filter->GetPin(2), nullptr);
}

TEST(VideoFilterConnectionTest, ConnectsWithOneFrameBufferAndReadsFrameDuration) {
  FilterPipeline pipeline(Plain(), Yuy2Type(64, 4, 333667));
  ASSERT_EQ(pipeline.Connect(), S_OK);
  ALLOCATOR_PROPERTIES props;
  ASSERT_EQ(pipeline.sink->InPin()->own_->GetProperties(&props), S_OK);
  EXPECT_EQ(props.cBuffers, 1);
  EXPECT_EQ(props.cbBuffer, 64 * 4 * 2);
  EXPECT_EQ(pipeline.filter->frameDuration, 333667);
  EXPECT_EQ(pipeline.filter->detectedFrameDuration, 333667);
  EXPECT_EQ(pipeline.filter->borderRefresh, 3);
  EXPECT_EQ(pipeline.filter->durationMs, 12346);
}

TEST(VideoFilterConnectionTest, InputReconnectionReconnectsTheOutput) {
  FilterPipeline pipeline(Plain(), Yuy2Type(64, 4));
  ASSERT_EQ(pipeline.Connect(), S_OK);
  EXPECT_EQ(ToVideoFormat(pipeline.sink->InPin()->CurrentMediaType()).biWidth, 64);
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
  EXPECT_TRUE(IsFilterUpstream(pipeline.filter->GetPin(1), u"Korvalin"));
  EXPECT_TRUE(IsFilterUpstream(pipeline.filter->GetPin(1), u"Source"));
  EXPECT_FALSE(IsFilterUpstream(pipeline.filter->GetPin(1), u"Sink"));
  EXPECT_EQ(FindNamedFilter(pipeline.graph.Get(), u"Korvalin").Get(),
            static_cast<IBaseFilter*>(pipeline.filter.Get()));
  EXPECT_FALSE(FindNamedFilter(pipeline.graph.Get(), u"Nothing"));
}

}  // namespace
}  // namespace korvalin::testing
