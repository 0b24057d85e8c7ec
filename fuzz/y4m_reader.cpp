// Feeds arbitrary bytes to the YUV4MPEG2 reader as a stream and reads every frame.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "filter/y4m_stream.h"

namespace {

// Larger pictures are valid but would only measure the fuzzer's memory limit.
constexpr std::size_t kMaxFrameBytes = std::size_t{16} << 20;
constexpr int kMaxFrames = 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::FILE* file = fmemopen(const_cast<uint8_t*>(data), size, "rb");
  if (!file) return 0;
  korvalin::Y4mReader reader(file);
  if (reader.ReadHeader().empty() && reader.header().Yuy2FrameSize() <= kMaxFrameBytes) {
    std::vector<uint8_t> frame;
    for (int i = 0; i < kMaxFrames; ++i) {
      const int result = reader.ReadFrame(&frame);
      if (result < -1 || result > 1) __builtin_trap();
      if (result != 1) break;
      if (frame.size() != reader.header().Yuy2FrameSize()) __builtin_trap();
    }
  }
  std::fclose(file);
  return 0;
}
