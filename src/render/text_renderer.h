#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/dyn_string.h"
#include "platform/text_draw.h"
#include "platform/text_font.h"
#include "render/pixel_mode.h"
#include "render/subtitle_renderer.h"
#include "settings/font_style.h"
#include "video/color_tables.h"

namespace korvalin {

// Turns a subtitle or the clock text into a 32-bit image (red in the low byte, 0
// transparent, kDarkPixel for outlines and boxes) in the top-left corner of its surface,
// and keeps a copy converted to the output format for blending.
class TextRenderer : public SubtitleRenderer {
 public:
  // Surfaces are held to 0..kMaxSurfaceSide pixels each way.
  static constexpr int32_t kMaxSurfaceSide = 8192;

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

  // Draws the text (lines separated by line feeds) as the current image. -1 when 92% of
  // the drawing width is below 2 pixels or no font can be made.
  int RenderText(const char* text, int32_t drawingWidth) override;
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
  int32_t surfaceWidth() const { return surfaceWidth_; }
  int32_t surfaceHeight() const { return surfaceHeight_; }
  int32_t fontHeight() const { return fontHeight_; }
  bool fontDirty() const { return fontDirty_; }
  PixelMode convertedMode() const { return convertedMode_; }
  uint32_t colour() const { return colour_; }
  platform::TextFont* font() { return font_.get(); }

 private:
  platform::SurfaceView Surface();
  void FillImageRows(int32_t height);

  std::unique_ptr<platform::TextFont> font_;
  int32_t size_ = 0;
  int32_t weight_ = 0;
  int32_t alignment_ = 0;
  uint32_t colour_ = 0;
  int32_t transparent_ = 0;
  DynString face_;
  int32_t charset_ = 0;
  bool fontDirty_ = true;
  int32_t fontHeight_ = 0;
  int32_t surfaceWidth_;
  int32_t surfaceHeight_;
  std::vector<uint32_t> surface_;  // bottom-up: image row y at surface row height - 1 - y
  int32_t imageWidth_ = 0;
  int32_t imageHeight_ = 0;
  ColorTables tables_;
  std::vector<uint8_t> converted_;  // same row order, surfaceWidth_ * 4 bytes per row
  PixelMode convertedMode_ = PixelMode::None;
};

// Applies a settings style as the filter does: the size for the display shape, the
// character set's number and the alignment that XPos implies.
void ApplyFontStyle(TextRenderer& renderer, const FontStyle& style, int32_t tv);

}  // namespace korvalin
