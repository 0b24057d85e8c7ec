// Whole-frame writing in every output format, borders written and skipped, with the scalar
// and the SSE2 YUY2-to-RGB conversion. Items are frames, so items_per_second is frames
// per second; bytes are output bytes.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "video/color_tables.h"
#include "video/frame_writer.h"
#include "video/pixel_size.h"
#include "video/yuy2_to_rgb.h"
#include "video/yuy2_to_rgb_sse2.h"

namespace korvalin {
namespace {

struct FrameSize {
  int32_t width, height;
};

// An 8 % overscan border on each side, the way the filter pads a picture for a TV.
FrameGeometry OverscanGeometry(FrameSize size) {
  int32_t border = 8 * size.width / 200;
  border += border & 1;
  FrameGeometry g;
  g.copyWidth = size.width;
  g.leftBorder = border;
  g.rightBorder = border;
  g.outputWidth = size.width + 2 * border;
  g.outputHeight = size.height;
  return g;
}

void WriteFrames(benchmark::State& state, FrameSize size, PixelFormat format, int32_t borderRefresh,
                 const Yuy2ToRgbKernels* kernels) {
  const ColorTables tables;
  const FrameGeometry geometry = OverscanGeometry(size);
  std::vector<uint8_t> input(static_cast<size_t>(size.width) * size.height * 2);
  std::mt19937 random(1);
  for (uint8_t& byte : input) byte = static_cast<uint8_t>(random());
  VideoFormat inFormat;
  inFormat.biWidth = size.width;
  inFormat.biHeight = -size.height;
  inFormat.biBitCount = 16;
  VideoFormat outFormat;
  outFormat.biWidth = geometry.outputWidth;
  outFormat.biHeight = size.height;
  outFormat.biBitCount = static_cast<uint16_t>(BytesPerPixel(format) * 8);
  std::vector<uint8_t> output(static_cast<size_t>(geometry.outputWidth) * size.height *
                              BytesPerPixel(format));
  for (auto _ : state) {
    const int result = WriteFrame({input.data(), input.size(), &inFormat},
                                  {output.data(), output.size(), &outFormat, format}, geometry, 0,
                                  borderRefresh, tables, *kernels);
    benchmark::DoNotOptimize(result);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(output.size()));
}

const bool kRegistered = [] {
  const struct {
    const char* name;
    FrameSize size;
  } sizes[] = {{"720x576", {720, 576}}, {"1920x1080", {1920, 1080}}};
  const struct {
    const char* name;
    PixelFormat format;
  } formats[] = {
      {"YUY2", PixelFormat::YUY2}, {"RGB32", PixelFormat::RGB32}, {"RGB565", PixelFormat::RGB565}};
  const struct {
    const char* name;
    const Yuy2ToRgbKernels* kernels;
  } conversions[] = {{"scalar", &kScalarYuy2ToRgb}, {"sse2", &kSse2Yuy2ToRgb}};
  for (const auto& size : sizes) {
    for (const auto& format : formats) {
      for (const auto& conversion : conversions) {
        // YUY2 output is a plain copy: no conversion to compare.
        if (format.format == PixelFormat::YUY2 && conversion.kernels != &kScalarYuy2ToRgb) {
          continue;
        }
        for (int32_t borderRefresh : {3, 0}) {
          const std::string name = std::string("WriteFrame/") + size.name + "/" + format.name +
                                   "/" + (borderRefresh ? "borders" : "economic") + "/" +
                                   (format.format == PixelFormat::YUY2 ? "copy" : conversion.name);
          benchmark::RegisterBenchmark(name.c_str(), WriteFrames, size.size, format.format,
                                       borderRefresh, conversion.kernels);
        }
      }
    }
  }
  return true;
}();

}  // namespace
}  // namespace korvalin
