#include "korvalin/demo_clip.h"

#include <vector>

#include "filter/y4m_stream.h"

namespace korvalin::cli {

namespace {

struct Yuv {
  uint8_t y, u, v;
};

// 75% colour bars in studio range: white, yellow, cyan, green, magenta, red, blue, black.
constexpr Yuv kBars[] = {{180, 128, 128}, {162, 44, 142}, {131, 156, 44}, {112, 72, 58},
                         {84, 184, 198},  {65, 100, 212}, {35, 212, 114}, {16, 128, 128}};
constexpr int32_t kMarkerSide = 48;
constexpr int32_t kMarkerStep = 8;  // pixels per frame

void FillPairs(uint8_t* row, int32_t firstPair, int32_t pairs, Yuv colour) {
  for (int32_t p = firstPair; p < firstPair + pairs; ++p) {
    row[4 * p + 0] = colour.y;
    row[4 * p + 1] = colour.u;
    row[4 * p + 2] = colour.y;
    row[4 * p + 3] = colour.v;
  }
}

void DrawFrame(int32_t index, std::vector<uint8_t>* frame) {
  const int32_t pairs = kDemoWidth / 2;
  const int32_t stride = kDemoWidth * 2;
  for (int32_t row = 0; row < kDemoHeight; ++row) {
    uint8_t* bytes = frame->data() + row * stride;
    for (int32_t bar = 0; bar < 8; ++bar) {
      const int32_t first = bar * pairs / 8;
      FillPairs(bytes, first, (bar + 1) * pairs / 8 - first, kBars[bar]);
    }
  }
  const int32_t travel = kDemoWidth - kMarkerSide;
  int32_t x = (index * kMarkerStep) % (2 * travel);
  if (x > travel) x = 2 * travel - x;  // back and forth
  const int32_t top = (kDemoHeight - kMarkerSide) / 2;
  for (int32_t row = top; row < top + kMarkerSide; ++row) {
    FillPairs(frame->data() + row * stride, x / 2, kMarkerSide / 2, {235, 128, 128});
  }
}

}  // namespace

bool WriteDemoClip(std::FILE* file, int32_t frames) {
  Y4mWriter writer(file);
  if (!writer.WriteHeader(kDemoWidth, kDemoHeight, kDemoFps, 1)) return false;
  std::vector<uint8_t> frame(std::size_t(kDemoWidth) * kDemoHeight * 2);
  for (int32_t i = 0; i < frames; ++i) {
    DrawFrame(i, &frame);
    if (!writer.WriteFrame(frame)) return false;
  }
  return std::fflush(file) == 0;
}

}  // namespace korvalin::cli
