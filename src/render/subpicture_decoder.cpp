// ReadSubpicture: pack checks and the assembly of one subpicture unit from the
// packs of its stream.
#include "render/subpicture_decoder.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace korvalin {

namespace {

constexpr int64_t kLargestOffset = int64_t{1} << 31;  // offsets from 2 GB on are refused

// Byte positions within a pack.
constexpr std::size_t kPesFlags1 = 20;
constexpr std::size_t kPesFlags2 = 21;
constexpr std::size_t kPesHeaderLength = 22;
constexpr std::size_t kPesHeaderData = 23;
constexpr uint8_t kScrambling = 0x30;
constexpr uint8_t kHasTimeStamp = 0x80;

using Pack = std::array<uint8_t, kSubpicturePackSize>;

bool ReadPack(StdFile& file, Pack& pack) {
  return file.Read(pack.data(), 1, pack.size()) == pack.size();
}

// Where the payload of a pack begins: its substream byte is at 23 + h, so the payload is at
// 24 + h. h is at most 255, so both lie well inside the pack.
std::size_t SubstreamPosition(const Pack& pack) {
  return kPesHeaderData + pack[kPesHeaderLength];
}

bool IsFirstPack(const Pack& p) {
  const bool packStart = p[0] == 0 && p[1] == 0 && p[2] == 1 && p[3] == 0xBA;
  const bool privateStream1 = p[14] == 0 && p[15] == 0 && p[16] == 1 && p[17] == 0xBD;
  if (!packStart || !privateStream1) return false;
  if ((p[kPesFlags1] & kScrambling) != 0) return false;
  if ((p[kPesFlags2] & kHasTimeStamp) == 0) return false;
  if ((p[kPesHeaderData] >> 4) != 2) return false;
  const uint8_t substream = p[SubstreamPosition(p)];
  return substream >= 0x20 && substream <= 0x3F;
}

}  // namespace

int ReadSubpicture(Picture& picture, int32_t& duration, int64_t offset, StdFile& file,
                   const LumaPalette& palette, SubpictureArea area) {
  duration = 0;
  picture.FreePixels();
  if (offset < 0 || offset >= kLargestOffset) return -1;
  if (file.Seek(static_cast<long>(offset), SEEK_SET) != 0) return -1;
  Pack pack;
  if (!ReadPack(file, pack) || !IsFirstPack(pack)) return -1;
  const std::size_t substreamAt = SubstreamPosition(pack);
  const uint8_t substream = pack[substreamAt];
  const std::size_t header = substreamAt + 1;  // the unit's first byte
  const uint32_t unitSize = (uint32_t{pack[header]} << 8) | pack[header + 1];
  const uint32_t controlOffset = (uint32_t{pack[header + 2]} << 8) | pack[header + 3];
  // Left to the implementer: a size below 4 would wrap to a buffer of almost 64 KiB.
  if (unitSize < 4) return -1;

  std::vector<uint8_t> unit(unitSize - 4);
  std::size_t filled = 0;
  auto append = [&](std::size_t from) {
    const std::size_t take = std::min(kSubpicturePackSize - from, unit.size() - filled);
    std::copy_n(pack.begin() + static_cast<std::ptrdiff_t>(from), take,
                unit.begin() + static_cast<std::ptrdiff_t>(filled));
    filled += take;
  };
  append(header + 4);
  while (filled < unit.size()) {
    if (!ReadPack(file, pack)) return -1;
    if ((pack[kPesFlags1] & kScrambling) != 0) return -1;
    // A pack with a time stamp starts another unit; another substream is another stream
    // (or not a subpicture at all): neither belongs to this unit.
    if ((pack[kPesFlags2] & kHasTimeStamp) != 0) continue;
    const std::size_t at = SubstreamPosition(pack);
    if (pack[at] != substream) continue;
    append(at + 1);
  }
  return DecodeSubpictureUnit(unit.data(), unit.size(), controlOffset, palette, picture, duration,
                              area);
}

}  // namespace korvalin
