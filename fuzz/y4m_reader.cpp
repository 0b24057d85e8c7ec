// Feeds arbitrary bytes to the YUV4MPEG2 reader as a stream: the header's frame times as the
// source and the filter compute them, then every frame, the first one read ahead as the
// source reads it before building its graph.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/saturating_cast.h"
#include "filter/y4m_stream.h"

namespace {

constexpr int kMaxFrames = 16;

// Frame starts never go back and a frame lasts as long as the bounded rates allow; the
// stream's duration in milliseconds is what the filter takes from the graph.
void CheckTiming(const korvalin::Y4mHeader& header, int64_t frames, int64_t extra) {
  const int64_t duration = header.FrameDuration();
  if (duration < 10000 || duration > 1000000000) __builtin_trap();
  for (const int64_t n : {int64_t{0}, frames, extra, INT64_MAX - 1}) {
    if (n < 0 || n == INT64_MAX) continue;
    const int64_t start = header.FrameStart(n), next = header.FrameStart(n + 1);
    if (start < 0 || next < start) __builtin_trap();
    const double seconds = static_cast<double>(start) / 1e7;
    if (korvalin::SaturatingCast<int32_t>(seconds * 1000 + 0.5) < 0) __builtin_trap();
  }
}

int64_t TailNumber(const uint8_t* data, size_t size) {
  int64_t n = 0;
  if (size >= sizeof n) std::memcpy(&n, data + size - sizeof n, sizeof n);
  return n;
}

void ReadFrames(korvalin::Y4mReader& reader) {
  std::vector<uint8_t> frame;
  const int ahead = reader.ReadAhead();
  for (int i = 0; i < kMaxFrames; ++i) {
    const int result = reader.ReadFrame(&frame);
    if (result < -1 || result > 1 || (i == 0 && result != ahead)) __builtin_trap();
    if (result != 1) break;
    if (frame.size() != reader.header().Yuy2FrameSize()) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::FILE* file = fmemopen(const_cast<uint8_t*>(data), size, "rb");
  if (!file) return 0;
  korvalin::Y4mReader reader(file);
  if (reader.ReadHeader().empty()) {
    CheckTiming(reader.header(), reader.CountFrames(), TailNumber(data, size));
    ReadFrames(reader);
  }
  std::fclose(file);
  return 0;
}
