#include <benchmark/benchmark.h>

#include <vector>

#include "render/blend_overlay.h"
#include "render/text_renderer.h"

namespace korvalin {
namespace {

constexpr const char* kSubtitle = "A two-line subtitle, as most are,\nwith a second line below it";
constexpr const char* kStyledSubtitle =
    "A <i>two-line</i> subtitle, <b>as most are</b>,\n"
    "with a <font color=\"#FFFF00\">second line</font> <u>below</u> it";

// Drawing width, and 1 for the SubRip text with its tags applied, 0 for the plain one.
void BM_RenderText(benchmark::State& state) {
  const auto drawingWidth = static_cast<int32_t>(state.range(0));
  const bool styled = state.range(1) != 0;
  const char* text = styled ? kStyledSubtitle : kSubtitle;
  const TextMarkup markup = styled ? TextMarkup::SubRip : TextMarkup::None;
  TextRenderer renderer(720, 576);
  renderer.RenderText(text, drawingWidth, markup);  // the fonts and glyphs are made once
  for (auto _ : state) {
    renderer.ClearImage();
    benchmark::DoNotOptimize(renderer.RenderText(text, drawingWidth, markup));
  }
}
BENCHMARK(BM_RenderText)->ArgsProduct({{720, 1920, 3840}, {0, 1}})->ArgNames({"width", "styled"});

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
  for (const auto& [w, h] : {std::pair{720, 576}, {1920, 1080}, {3840, 2160}}) {
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
