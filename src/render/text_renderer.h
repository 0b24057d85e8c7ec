#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/dyn_string.h"
#include "platform/text_draw.h"
#include "platform/text_font_set.h"
#include "platform/text_runs.h"
#include "render/pixel_mode.h"
#include "render/subtitle_renderer.h"
#include "render/surface_size.h"
#include "settings/font_style.h"
#include "video/color_tables.h"

namespace korvalin {

// Turns a subtitle or the clock text into a 32-bit image (red in the low byte, 0
// transparent, kDarkPixel for outlines and boxes) in the top-left corner of its surface,
// and keeps a copy converted to the output format for blending. The image is cut at the
// surface, which has the size given for drawing widths up to that width and grows in
// proportion to wider pictures; memory is taken only for the rows an image uses.
class TextRenderer : public SubtitleRenderer {
 public:
  // The surface for drawing widths up to surfaceWidth; each side is held to
  // 0..kMaxSurfaceSide.
  TextRenderer(int32_t surfaceWidth, int32_t surfaceHeight);
  ~TextRenderer() override;
  TextRenderer(const TextRenderer&) = delete;
  TextRenderer& operator=(const TextRenderer&) = delete;

  // Takes the style; draws nothing, but the next drawing makes the font again. Colour 0 is
  // kept as the dark colour so black text stays opaque. Alignment 0 left, 1 centre,
  // 2 right. Returns 0.
  int SetStyle(const char* face, int32_t charset, int32_t size, int32_t weight, int32_t alignment,
               uint32_t colour, int32_t transparent);
  // Makes the font for a drawing width unless the one in use fits. 0, or -1 when no font
  // can be made.
  int EnsureFont(int32_t drawingWidth);

  // Draws the text (lines separated by line feeds) as the current image, its markup applied.
  // -1 when 92% of the drawing width is below 2 pixels or no font can be made.
  int RenderText(const char* text, int32_t drawingWidth, TextMarkup markup) override;
  // The same for a text without markup.
  int RenderText(const char* text, int32_t drawingWidth) {
    return RenderText(text, drawingWidth, TextMarkup::None);
  }
  // Draws an 8-bit picture tinted with the style colour as the current image.
  int RenderPicture(const Picture& picture, int32_t drawingWidth) override;
  void ClearImage() override;

  // Row y of the image, nullptr outside it.
  uint32_t* ImageRow(int32_t y);
  // Row y of the converted copy, nullptr outside the image.
  const uint8_t* ConvertedRow(int32_t y) const;
  // Converts the image into the mode's format unless the copy already holds it. 0, or -1
  // for an unknown mode.
  int ConvertTo(PixelMode mode);

  int32_t imageWidth() const { return imageWidth_; }
  int32_t imageHeight() const { return imageHeight_; }
  // The surface of the latest drawing.
  int32_t surfaceWidth() const { return surfaceWidth_; }
  int32_t surfaceHeight() const { return surfaceHeight_; }
  int32_t fontHeight() const { return fontHeight_; }
  bool fontDirty() const { return fontDirty_; }
  PixelMode convertedMode() const { return convertedMode_; }
  uint32_t colour() const { return colour_; }
  // The style's fonts at the current height; nothing before the first drawing.
  platform::TextFontSet* fonts() { return fonts_.get(); }

 private:
  platform::StyledText StyledTextOf(const char* text, TextMarkup markup) const;
  void UseSurfaceFor(int32_t drawingWidth);
  void StartImage(int32_t width, int32_t height);
  platform::SurfaceView Surface();

  std::unique_ptr<platform::TextFontSet> fonts_;
  int32_t size_ = 0;
  int32_t weight_ = 0;
  int32_t alignment_ = 0;
  uint32_t colour_ = 0;
  int32_t transparent_ = 0;
  DynString face_;
  int32_t charset_ = 0;
  bool fontDirty_ = true;
  int32_t fontHeight_ = 0;
  SurfaceSize base_;
  int32_t surfaceWidth_;
  int32_t surfaceHeight_;
  std::vector<uint32_t> pixels_;  // image rows top first, surfaceWidth_ words each
  int32_t imageWidth_ = 0;
  int32_t imageHeight_ = 0;
  ColorTables tables_;
  std::vector<uint8_t> converted_;  // the same rows, surfaceWidth_ * 4 bytes each
  PixelMode convertedMode_ = PixelMode::None;
};

// Applies a settings style as the filter does: the size for the display shape, the
// character set's number and the alignment that XPos implies.
void ApplyFontStyle(TextRenderer& renderer, const FontStyle& style, int32_t tv);

}  // namespace korvalin
