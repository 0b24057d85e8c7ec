#pragma once

#include <cstdint>

namespace korvalin {

// Line alignment implied by a horizontal anchor: below 31 left (0), below 70 centred (1),
// else right (2).
int32_t AlignmentOfXPos(int32_t xPos);

// Where an image goes in the output: its first drawn column x within the drawing area
// (after `skip` image columns cut at the left), how many columns are drawn, and its first
// output row y.
struct OverlayPlacement {
  int32_t x = 0;
  int32_t skip = 0;
  int32_t visible = 0;
  int32_t y = 0;
};

// XPos is a percentage of the drawing width, YPos of the output frame's height measured
// from the bottom. A right-aligned image is never drawn right of its anchor; an image that
// would start above the frame is moved down to row 0.
OverlayPlacement PlaceOverlay(int32_t xPos, int32_t yPos, int32_t imageWidth, int32_t imageHeight,
                              int32_t drawingWidth, int32_t frameHeight);

}  // namespace korvalin
