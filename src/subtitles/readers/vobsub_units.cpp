#include "subtitles/readers/vobsub_units.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

#include "render/subpicture_decoder.h"

namespace korvalin {
namespace {

// Size after scaling by percent, rounded; kept within 32 bits (ScaleTo refuses what is too
// large).
int32_t Scaled(int32_t size, int32_t percent) {
  const int64_t scaled = (int64_t{size} * percent + 50) / 100;
  return static_cast<int32_t>(std::clamp<int64_t>(scaled, INT32_MIN, INT32_MAX));
}

std::size_t FileSize(StdFile& file) {
  if (file.Seek(0, SEEK_END) != 0) return 0;
  const long size = file.Tell();
  return size > 0 ? static_cast<std::size_t>(size) : 0;
}

std::size_t ReadLimitFor(std::size_t fileSize) {
  constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
  if (fileSize > (kMax - VobSubUnits::kSubReadsMinimum) / VobSubUnits::kSubReadsPerByte) {
    return kMax;
  }
  return fileSize * VobSubUnits::kSubReadsPerByte + VobSubUnits::kSubReadsMinimum;
}

}  // namespace

VobSubUnits::VobSubUnits(LimitedReadFile& sub, const VobSubHeader& header,
                         std::size_t pictureByteLimit)
    : sub_(sub), header_(header), budget_(pictureByteLimit) {
  sub_.SetReadLimit(ReadLimitFor(FileSize(sub_)));
}

const VobSubUnit& VobSubUnits::At(int64_t offset) {
  auto known = units_.find(offset);
  if (known == units_.end()) known = units_.emplace(offset, Decode(offset)).first;
  return known->second;
}

// Decoding straight to the visible rectangle equals decoding the whole display area and
// cropping it, at the cost of what is visible only.
VobSubUnit VobSubUnits::Decode(int64_t offset) {
  auto picture = std::make_shared<Picture>();
  VobSubUnit unit;
  if (Exhausted()) {
    unit.picture = std::move(picture);
    return unit;
  }
  ReadSubpicture(*picture, unit.duration, offset, sub_, header_.palette,
                 SubpictureArea::kVisible);  // not checked: a failed unit is an empty picture
  const std::size_t decoded = PixelBytes(*picture);
  if (budget_.Spend(decoded)) {
    if (header_.smooth) picture->SmoothEdges();
    if (header_.scale != 100) {
      picture->ScaleTo(Scaled(picture->width, header_.scale),
                       Scaled(picture->height, header_.scale));
    }
    const std::size_t scaled = PixelBytes(*picture);
    if (scaled > decoded) budget_.Spend(scaled - decoded);
  }
  if (budget_.Exceeded()) picture->FreePixels();
  unit.picture = std::move(picture);
  return unit;
}

}  // namespace korvalin
