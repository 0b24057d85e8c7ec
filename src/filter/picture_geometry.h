#pragma once

#include <cstdint>

#include "settings/settings.h"
#include "video/frame_geometry.h"

namespace korvalin {

// The geometry rules under one settings record. The same functions serve the output format
// proposal and every frame, so both always agree.
class PictureGeometry {
 public:
  // sourceAspect: the input's picture width / height (0 unknown); overlaysShown: subtitles
  // are loaded or the clock shows something.
  PictureGeometry(const Settings& settings, float sourceAspect, bool overlaysShown)
      : settings_(settings), sourceAspect_(sourceAspect), overlaysShown_(overlaysShown) {}

  int32_t CompensateHeight(int32_t h) const;
  int32_t CopyWidth(int32_t width, int32_t height) const;
  int32_t BorderWidth(int32_t copyWidth) const;
  int32_t OutputHeight(int32_t copyWidth, int32_t height) const;

  // The geometry for an input of the given size whose output has the proposed size.
  FrameGeometry Propose(int32_t inputWidth, int32_t inputHeight) const;
  // The per-frame values for the formats actually agreed.
  FrameGeometry ForFrame(int32_t inputWidth, int32_t inputHeight, int32_t outputWidth,
                         int32_t outputHeight) const;

 private:
  const Settings& settings_;
  float sourceAspect_;
  bool overlaysShown_;
};

// Picture width / height of a format's pixel grid with its picture aspect ratio, 0 when
// either product is below 1.
float SourceAspectFromFormat(int32_t biWidth, int32_t biHeight, uint32_t pictAspectX,
                             uint32_t pictAspectY);

}  // namespace korvalin
