// Feeds arbitrary bytes to the SAMI reader as a file, preferring one of two languages.
#include "subtitles/readers/sami_reader.h"

#include "reader_fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return korvalin::fuzz::FuzzReader(data, size, "smi", korvalin::ReadSami,
                                    size % 2 ? "English" : "French");
}
