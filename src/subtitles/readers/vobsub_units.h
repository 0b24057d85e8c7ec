#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>

#include "base/limited_read_file.h"
#include "render/picture.h"
#include "subtitles/byte_budget.h"
#include "subtitles/readers/vobsub_index.h"

namespace korvalin {

// A decoded subpicture unit as the VobSub reader shows it.
struct VobSubUnit {
  std::shared_ptr<const Picture> picture;  // never null; empty when the unit did not decode
  int32_t duration = 0;                    // ms; 0 when the unit gives none
};

// The units a VobSub stream's time stamps name: each decoded once from the ".sub" file, cut
// to its visible pixels, smoothed and scaled as the index says, and shared by every time
// stamp that names it. Their pixels count against the track's budget (each unit at the
// largest size it had on the way), and the ".sub" file is read at most a few times over.
class VobSubUnits {
 public:
  // Reading a real file's units of one stream reads each of its packs once, and no stream
  // has more than the 32 subpicture substreams a stream name can cover.
  static constexpr std::size_t kSubReadsPerByte = 32;
  static constexpr std::size_t kSubReadsMinimum = std::size_t{64} << 20;

  VobSubUnits(LimitedReadFile& sub, const VobSubHeader& header,
              std::size_t pictureByteLimit = kTrackPictureByteLimit);

  // The unit whose first pack lies at offset.
  const VobSubUnit& At(int64_t offset);

  // True once the units went beyond what one track may take: more pixels than the budget,
  // or more reads of the ".sub" file than the limit above.
  bool Exhausted() const { return budget_.Exceeded() || sub_.LimitReached(); }

 private:
  VobSubUnit Decode(int64_t offset);

  LimitedReadFile& sub_;
  const VobSubHeader& header_;
  ByteBudget budget_;
  std::unordered_map<int64_t, VobSubUnit> units_;
};

}  // namespace korvalin
