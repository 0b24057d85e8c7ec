// Feeds arbitrary bytes to the WAV header parser, as a whole file and as the head of a longer
// one, and checks that a layout it accepts stays within the file and reads back.
#include <cstddef>
#include <cstdint>
#include <span>

#include "host/wav_format.h"

namespace {

using korvalin::host::ParseWavHeader;
using korvalin::host::WavParse;

void Check(std::span<const uint8_t> head, uint64_t fileSize) {
  const WavParse parse = ParseWavHeader(head, fileSize);
  if (!parse.error.empty()) return;
  const auto& layout = parse.layout;
  if (!korvalin::host::IsPlainPcm(layout.format)) __builtin_trap();
  if (layout.dataOffset > head.size() || layout.dataBytes > fileSize - layout.dataOffset)
    __builtin_trap();
  if (layout.dataBytes % layout.format.nBlockAlign != 0) __builtin_trap();
  const auto header = korvalin::host::WavHeaderBytes(layout.format, 0);
  const WavParse again = ParseWavHeader(header);
  if (!again.error.empty() || again.layout.format.nSamplesPerSec != layout.format.nSamplesPerSec ||
      again.layout.format.nBlockAlign != layout.format.nBlockAlign) {
    __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span<const uint8_t> bytes(data, size);
  Check(bytes, size);
  Check(bytes, uint64_t{size} + (uint64_t{1} << 32));  // a head of a file past 4 GiB
  return 0;
}
