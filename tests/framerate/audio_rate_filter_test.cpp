#include "framerate/audio_rate_filter.h"

#include <gtest/gtest.h>

#include "host/media_guids.h"
#include "host/wav_files.h"

namespace korvalin {
namespace {

using namespace host;
using host::testing::PcmFormat;

TEST(RaisedWaveFormatTest, RaisesRateAndByteRateOnly) {
  const struct {
    uint32_t rate;
    uint16_t channels, bits;
    int32_t frameDuration;
    uint32_t raisedRate, raisedBytes;
  } cases[] = {
      {44100, 2, 16, 416666, 45937, 183748}, {48000, 2, 16, 416666, 49999, 199996},
      {22050, 1, 8, 417083, 22991, 22991},  // 22991.7, truncated
      {44100, 2, 16, 0, 44100, 176400},     // no conversion: the same type
      {44100, 2, 16, -5, 44100, 176400},
  };
  for (const auto& c : cases) {
    WAVEFORMATEX format = PcmFormat(c.rate, c.channels, c.bits);
    format.cbSize = 7;
    const WAVEFORMATEX raised = RaisedWaveFormat(format, c.frameDuration);
    EXPECT_EQ(raised.nSamplesPerSec, c.raisedRate) << c.rate;
    EXPECT_EQ(raised.nAvgBytesPerSec, c.raisedBytes) << c.rate;
    EXPECT_EQ(raised.nChannels, format.nChannels);
    EXPECT_EQ(raised.nBlockAlign, format.nBlockAlign);
    EXPECT_EQ(raised.wBitsPerSample, format.wBitsPerSample);
    EXPECT_EQ(raised.cbSize, 7);
  }
}

TEST(AudioRateFilterTest, TakesPcmInAWaveFormatBlockOnly) {
  auto filter = MakeCom<AudioRateFilter>();
  const AM_MEDIA_TYPE pcm = PcmMediaType(PcmFormat(48000));
  AM_MEDIA_TYPE otherSubtype = pcm, otherFormat = pcm, shortBlock = pcm;
  otherSubtype.subtype = FourCCMap(0x0003);  // IEEE float
  otherFormat.formattype = FORMAT_VideoInfo;
  shortBlock.format.resize(16);
  EXPECT_EQ(filter->CheckInputType(pcm), S_OK);
  for (const AM_MEDIA_TYPE* type : {&otherSubtype, &otherFormat, &shortBlock})
    EXPECT_EQ(filter->CheckInputType(*type), VFW_E_TYPE_NOT_ACCEPTED);

  // Until the output connects there is no renderer's allocator to hand out.
  ComPtr<IMemAllocator> allocator;
  EXPECT_EQ(filter->InputPin()->GetAllocator(allocator.ReleaseAndGetAddressOf()),
            VFW_E_NOT_CONNECTED);
}

}  // namespace
}  // namespace korvalin
