// Feeds arbitrary bytes to the SubRip reader as a file.
#include "subtitles/readers/subrip_reader.h"

#include "reader_fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return korvalin::fuzz::FuzzReader(data, size, "srt", korvalin::ReadSubRip);
}
