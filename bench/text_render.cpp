#include <benchmark/benchmark.h>

#include <vector>

#include "render/blend_overlay.h"
#include "render/text_renderer.h"

namespace korvalin {
namespace {

constexpr const char* kSubtitle = "A two-line subtitle, as most are,\nwith a second line below it";

void BM_RenderText(benchmark::State& state) {
  const auto drawingWidth = static_cast<int32_t>(state.range(0));
  TextRenderer renderer(720, 576);
  renderer.RenderText(kSubtitle, drawingWidth);  // the font and glyphs are made once
  for (auto _ : state) {
    renderer.ClearImage();
    benchmark::DoNotOptimize(renderer.RenderText(kSubtitle, drawingWidth));
  }
}
BENCHMARK(BM_RenderText)->Arg(720)->Arg(1920);

struct FrameCase {
  int32_t width;
  int32_t height;
  PixelFormat format;
};

FrameCase CaseOf(const benchmark::State& state) {
  return {static_cast<int32_t>(state.range(0)), static_cast<int32_t>(state.range(1)),
          static_cast<PixelFormat>(state.range(2))};
}

PixelMode ModeOf(PixelFormat format) {
  return format == PixelFormat::YUY2    ? PixelMode::YUY2
         : format == PixelFormat::RGB32 ? PixelMode::RGB32
                                        : PixelMode::RGB565;
}

int32_t BytesPerPixel(PixelFormat format) {
  return format == PixelFormat::RGB32 ? 4 : 2;
}

void BM_ConvertTo(benchmark::State& state) {
  const FrameCase c = CaseOf(state);
  TextRenderer renderer(720, 576);
  renderer.RenderText(kSubtitle, c.width);
  for (auto _ : state) {
    renderer.ConvertTo(PixelMode::None);  // forgets the copy, as a new image would
    benchmark::DoNotOptimize(renderer.ConvertTo(ModeOf(c.format)));
  }
}

void BM_BlendOverlay(benchmark::State& state) {
  const FrameCase c = CaseOf(state);
  TextRenderer renderer(720, 576);
  renderer.RenderText(kSubtitle, c.width);
  VideoFormat input, output;
  input.biWidth = output.biWidth = c.width;
  input.biHeight = output.biHeight = -c.height;
  input.biBitCount = 16;
  output.biBitCount = static_cast<uint16_t>(8 * BytesPerPixel(c.format));
  std::vector<uint8_t> inputBytes(size_t(c.width) * c.height * 2, 128);
  std::vector<uint8_t> outputBytes(size_t(c.width) * c.height * BytesPerPixel(c.format), 16);
  OverlayTarget target;
  target.input = {inputBytes, &input, false};
  target.output = {outputBytes, &output, false};
  target.outputSubtype = c.format;
  target.drawingWidth = c.width;
  target.borderRefresh = 3;
  for (auto _ : state) benchmark::DoNotOptimize(BlendOverlay(renderer, 50, 8, target));
}

void FrameArguments(benchmark::internal::Benchmark* b) {
  for (const auto& [w, h] : {std::pair{720, 576}, std::pair{1920, 1080}}) {
    for (PixelFormat f : {PixelFormat::YUY2, PixelFormat::RGB32, PixelFormat::RGB565}) {
      b->Args({w, h, static_cast<int64_t>(f)});
    }
  }
  b->ArgNames({"width", "height", "format"});
}
BENCHMARK(BM_ConvertTo)->Apply(FrameArguments);
BENCHMARK(BM_BlendOverlay)->Apply(FrameArguments);

}  // namespace
}  // namespace korvalin
