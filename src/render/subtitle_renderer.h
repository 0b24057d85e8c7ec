#pragma once

#include <cstdint>

namespace korvalin {

class Picture;

// The inline markup a subtitle text carries into drawing: none (every byte is drawn), or
// SubRip's style tags, which are applied and not drawn.
enum class TextMarkup : int32_t { None = 0, SubRip = 1 };

// What a subtitle track draws its current entry through. The text rasterizer implements it;
// tests can substitute a recorder.
class SubtitleRenderer {
 public:
  virtual ~SubtitleRenderer() = default;
  // Draws a zero-terminated 8-bit text (lines separated by '\n') with its markup for a
  // picture drawingWidth pixels wide. 0 on success, -1 on failure.
  virtual int RenderText(const char* text, int32_t drawingWidth, TextMarkup markup) = 0;
  // Draws an 8-bit picture tinted with the style colour. 0 or -1.
  virtual int RenderPicture(const Picture& picture, int32_t drawingWidth) = 0;
  // Forgets the current image.
  virtual void ClearImage() = 0;
};

}  // namespace korvalin
