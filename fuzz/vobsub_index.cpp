// libFuzzer target for the VobSub index parser: the first line, the header pass,
// the stream choice and the stream pass over any bytes, plus the ".IFO" palette reader on
// the same bytes. Nothing reads out of bounds.
#include "subtitles/readers/vobsub_index.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/std_file.h"
#include "subtitles/line_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace korvalin;
  StdFile index;
  if (index.OpenMemory(data, size, "rt") != 0) return 0;
  DynString first;
  ReadLineString(index, first);
  first.TrimLeft();
  first.TrimRight();
  ParseVobSubVersion(first.c_str());
  VobSubHeader header;
  if (ReadVobSubHeader(index, header) == 0) {
    if (header.scale <= 0) std::abort();
    const int32_t chosen = ChooseVobSubStream(header.streamNames, "German");
    if (chosen < 0 || (chosen > 0 && static_cast<std::size_t>(chosen) >= header.streamNames.size()))
      std::abort();
    if (!header.streamNames.empty() && index.Seek(0, SEEK_SET) == 0) {
      std::vector<VobSubTimestamp> stamps;
      ReadVobSubStream(index, header.streamNames[static_cast<std::size_t>(chosen)].c_str(), stamps);
    }
  }
  StdFile ifo;
  if (ifo.OpenMemory(data, size, "rb") == 0) {
    LumaPalette palette;
    if (ReadIfoPalette(ifo, palette) == 0) {
      for (uint8_t luma : palette.luma)
        if (luma == 0) std::abort();
    }
  }
  return 0;
}
