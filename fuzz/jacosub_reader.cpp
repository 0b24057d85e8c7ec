// Feeds arbitrary bytes to the JACOsub reader as a file.
#include "subtitles/readers/jacosub_reader.h"

#include "reader_fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return korvalin::fuzz::FuzzReader(data, size, "js", korvalin::ReadJacoSub);
}
