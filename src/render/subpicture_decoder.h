#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/std_file.h"
#include "render/picture.h"

namespace korvalin {

// The luma (1 to 255) of each of the 16 palette colours of a VobSub file, and
// whether a palette was read at all.
struct LumaPalette {
  std::array<uint8_t, 16> luma{};
  bool read = false;
};

// Size of one MPEG-2 program stream pack of a VobSub ".sub" file.
inline constexpr std::size_t kSubpicturePackSize = 2048;

// How much of a unit's display area a decoded picture holds: all of it, or only the smallest
// rectangle holding its visible pixels, exactly as Picture::CropToContent would cut it. The
// latter never makes the whole area: its time and memory follow the unit's codes and that
// rectangle, so a tiny unit declaring a 4096 x 4096 area costs nothing much.
enum class SubpictureArea { kWhole, kVisible };

// ReadSubpicture: reads the DVD subpicture unit whose first pack begins at
// offset in file, assembles it across packs (packs of other streams skipped), runs its
// control commands and decodes its interlaced run-length-coded pixels into picture (one
// luma byte per pixel of the display area, 0 transparent). duration receives the display
// time in ms from the second control sequence's delay, 0 when there is none.
// Returns 0, or -1 on failure (offset from 2^31 on or negative, seek or read failure, a
// first pack that is not a time-stamped private-stream-1 subpicture pack, scrambled data,
// a unit size below 4, an unknown command).
// Damaged units never read or write outside the assembled unit or the picture: a command
// whose operands run past the unit's end ends the command reading, a code that runs past
// the unit's end ends the decoding, a display area whose end lies before its start leaves
// the picture empty.
int ReadSubpicture(Picture& picture, int32_t& duration, int64_t offset, StdFile& file,
                   const LumaPalette& palette, SubpictureArea area = SubpictureArea::kWhole);

// Decodes an assembled unit: unit holds the unit from its fifth byte on (unit
// offset o at position o - 4), controlOffset is the unit header's control offset,
// used as a buffer position (the first command of the first control sequence).
// Returns 0 or -1 as ReadSubpicture.
int DecodeSubpictureUnit(const uint8_t* unit, std::size_t size, uint32_t controlOffset,
                         const LumaPalette& palette, Picture& picture, int32_t& duration,
                         SubpictureArea area = SubpictureArea::kWhole);

}  // namespace korvalin
