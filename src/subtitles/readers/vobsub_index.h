#pragma once

#include <cstdint>
#include <vector>

#include "base/dyn_string.h"
#include "base/std_file.h"
#include "render/subpicture_decoder.h"

namespace korvalin {

// The VobSub index file (".IDX"): its first line, the header pass (palette,
// options, stream names) and the pass over the chosen stream's time stamps. The index is
// read in text mode; every line is stripped of bytes up to 0x20 at both ends.

// The first line's version: the number after "# VobSub index file, v", or -1 when the
// signature or the number is missing. The reader accepts 3 to 6.
int32_t ParseVobSubVersion(const char* firstLine);

// The value of key in a stripped line, by the lookup rule: in " " + line + ","
// the bytes after the first " key: ", up to the first "," or byte up to 0x20. Empty when
// the key is absent or directly followed by such a byte.
DynString VobSubKeyValue(const char* line, const char* key);

// A "palette:" line (stripped) into luma values; -1 when fewer than 16 values scan.
int ParseVobSubPalette(const char* line, LumaPalette& palette);

// The palette of a DVD title set information file (".IFO"): -1 on a short read.
int ReadIfoPalette(StdFile& ifo, LumaPalette& palette);

// What the header pass gathers. palette.read may be set beforehand (from an ".IFO" file),
// in which case palette lines are ignored.
struct VobSubHeader {
  bool smooth = false;
  int32_t scale = 100;  // per cent
  std::vector<DynString> streamNames;
  LumaPalette palette;
};

// The header pass over the rest of index (step 4): 0, or -1 for a bad palette line.
int ReadVobSubHeader(StdFile& index, VobSubHeader& header);

// Index of the stream to read: the first name equal to preferred without regard to case,
// else 0.
int32_t ChooseVobSubStream(const std::vector<DynString>& names, const char* preferred);

struct VobSubTimestamp {
  int32_t start;         // ms, the stream's delay included
  int64_t filePosition;  // byte offset of the unit's first pack in the ".sub" file
};

// The stream pass over index from where it stands (step 7): the time stamps of the block(s)
// of the stream named streamName, in index order. -1 for a time stamp that does not scan or
// a missing or unreadable "filepos".
int ReadVobSubStream(StdFile& index, const char* streamName,
                     std::vector<VobSubTimestamp>& timestamps);

}  // namespace korvalin
