#include "render/text_renderer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "platform/code_page.h"
#include "render/image_outline.h"
#include "render/overlay_conversion.h"
#include "render/overlay_placement.h"
#include "render/picture.h"
#include "render/subrip_markup.h"

namespace korvalin {
namespace {

constexpr uint32_t kBoxFill = 0x01010101;

// Rounded up to an even number, so that a YUY2 pixel pair is never split.
int32_t MadeEven(int32_t width) {
  return width + (width & 1);
}

platform::TextAlign TextAlignOf(int32_t alignment) {
  if (alignment == 1) return platform::TextAlign::Center;
  if (alignment == 2) return platform::TextAlign::Right;
  return platform::TextAlign::Left;
}

// The cell height for a drawing width: size / 640 of it, rounded half up.
int32_t CellHeightFor(int32_t size, int32_t drawingWidth) {
  const float scaled = static_cast<float>(int64_t{size} * drawingWidth) * 0.0015625f;
  const double rounded = static_cast<double>(scaled) + 0.5;
  return static_cast<int32_t>(std::clamp<double>(rounded, std::numeric_limits<int32_t>::min(),
                                                 std::numeric_limits<int32_t>::max()));
}

uint8_t Tint(uint8_t value, uint32_t colour, int shift) {
  return static_cast<uint8_t>(value * (colour >> shift & 0xFF) / 256);
}

}  // namespace

TextRenderer::TextRenderer(int32_t surfaceWidth, int32_t surfaceHeight)
    : base_{std::clamp(surfaceWidth, 0, kMaxSurfaceSide),
            std::clamp(surfaceHeight, 0, kMaxSurfaceSide)},
      surfaceWidth_(base_.width),
      surfaceHeight_(base_.height) {
  SetStyle("Arial", 0, 30, 500, 1, 0xFFFFFF, 1);
}

TextRenderer::~TextRenderer() = default;

int TextRenderer::SetStyle(const char* face, int32_t charset, int32_t size, int32_t weight,
                           int32_t alignment, uint32_t colour, int32_t transparent) {
  face_.Assign(face != nullptr ? face : "");
  charset_ = charset;
  size_ = size;
  weight_ = weight;
  alignment_ = alignment;
  colour_ = colour & 0xFFFFFF;
  if (colour_ == 0) colour_ = kDarkPixel;
  transparent_ = transparent;
  fontDirty_ = true;
  return 0;
}

int TextRenderer::EnsureFont(int32_t drawingWidth) {
  const int32_t height = CellHeightFor(size_, drawingWidth);
  if (fonts_ && height == fontHeight_ && !fontDirty_) return 0;
  fontDirty_ = false;
  fontHeight_ = height;
  fonts_ = platform::TextFontSet::Create(face_.c_str(), weight_, height);
  return fonts_ ? 0 : -1;
}

void TextRenderer::UseSurfaceFor(int32_t drawingWidth) {
  const SurfaceSize size = SurfaceForDrawingWidth(base_, drawingWidth);
  surfaceWidth_ = size.width;
  surfaceHeight_ = size.height;
}

// Takes memory for the image's rows (kept for later images, so it only ever grows to the
// largest image drawn) and fills them whole, so a column added to make the width even
// holds the fill too.
void TextRenderer::StartImage(int32_t width, int32_t height) {
  imageWidth_ = width;
  imageHeight_ = height;
  const size_t words = static_cast<size_t>(surfaceWidth_) * height;
  if (pixels_.size() < words) pixels_.resize(words);
  if (converted_.size() < words * 4) converted_.resize(words * 4);
  std::fill_n(pixels_.begin(), words, transparent_ != 0 ? 0 : kBoxFill);
}

platform::SurfaceView TextRenderer::Surface() {
  if (pixels_.empty()) return {};
  return {reinterpret_cast<uint8_t*>(pixels_.data()), std::ptrdiff_t{surfaceWidth_} * 4,
          surfaceWidth_, imageHeight_};
}

// The text read in the style's code page, or as UTF-8, with its markup applied. A colour run
// of black is drawn dark, like a black style, so that it stays opaque.
platform::StyledText TextRenderer::StyledTextOf(const char* text, TextMarkup markup) const {
  std::u32string unicode = platform::DecodeSubtitleText(text != nullptr ? text : "",
                                                        platform::CodePageOfCharset(charset_));
  if (markup != TextMarkup::SubRip) return {std::move(unicode), {}};
  platform::StyledText styled = ParseSubRipMarkup(unicode);
  for (platform::TextRun& run : styled.runs) {
    if (run.style.colour == 0u) run.style.colour = kDarkPixel;
  }
  return styled;
}

int TextRenderer::RenderText(const char* text, int32_t drawingWidth, TextMarkup markup) {
  const int64_t maxWidth = (int64_t{drawingWidth} * 92 / 100) & ~int64_t{1};
  if (maxWidth < 2) return -1;
  if (EnsureFont(drawingWidth) != 0) return -1;
  const platform::StyledText styled = StyledTextOf(text, markup);

  platform::TextFormat format{TextAlignOf(alignment_), false};
  platform::TextExtent extent = platform::MeasureText(*fonts_, styled, format, 0);
  int64_t width = MadeEven(extent.width + 2);
  if (width > maxWidth) {
    format.wordBreak = true;
    const auto wrapWidth = static_cast<int32_t>(std::min<int64_t>(maxWidth - 2, INT32_MAX));
    extent = platform::MeasureText(*fonts_, styled, format, wrapWidth);
    width = MadeEven(extent.width + 2);
  }
  UseSurfaceFor(drawingWidth);
  StartImage(static_cast<int32_t>(std::min<int64_t>(width, surfaceWidth_)),
             std::min(extent.height + 2, surfaceHeight_));
  const platform::SurfaceView surface = Surface();
  platform::DrawText(*fonts_, styled, format, {1, 1, imageWidth_ - 1, imageHeight_ - 1}, colour_,
                     surface);
  if (transparent_ != 0) OutlineGlyphs(surface, imageWidth_, imageHeight_);
  return 0;
}

int TextRenderer::RenderPicture(const Picture& picture, int32_t drawingWidth) {
  EnsureFont(drawingWidth);  // made as for text, though a picture needs none
  UseSurfaceFor(drawingWidth);
  const int32_t width = std::clamp(picture.width, 0, surfaceWidth_);
  const int32_t height = std::clamp(picture.height, 0, surfaceHeight_);
  StartImage(width, height);
  const platform::SurfaceView surface = Surface();
  for (int32_t y = 0; y < height; ++y) {
    uint32_t* row = surface.Row(y);
    const size_t rowStart = static_cast<size_t>(y) * picture.width;
    for (int32_t x = 0; x < width && rowStart + x < picture.pixels.size(); ++x) {
      const uint8_t v = picture.pixels[rowStart + x];
      if (v == 0) continue;
      const uint32_t word = Tint(v, colour_, 0) | uint32_t{Tint(v, colour_, 8)} << 8 |
                            uint32_t{Tint(v, colour_, 16)} << 16;
      row[x] = word == 0 ? kDarkPixel : word;
    }
  }
  if ((imageWidth_ & 1) != 0 && imageWidth_ < surfaceWidth_) ++imageWidth_;
  return 0;
}

void TextRenderer::ClearImage() {
  imageWidth_ = 0;
  imageHeight_ = 0;
  convertedMode_ = PixelMode::None;
}

uint32_t* TextRenderer::ImageRow(int32_t y) {
  if (y < 0 || y >= imageHeight_) return nullptr;
  return Surface().Row(y);
}

const uint8_t* TextRenderer::ConvertedRow(int32_t y) const {
  if (y < 0 || y >= imageHeight_) return nullptr;
  return converted_.data() + static_cast<size_t>(y) * surfaceWidth_ * 4;
}

int TextRenderer::ConvertTo(PixelMode mode) {
  if (convertedMode_ == mode) return 0;
  convertedMode_ = PixelMode::None;
  if (mode != PixelMode::RGB32 && mode != PixelMode::RGB565 && mode != PixelMode::YUY2) {
    return -1;
  }
  for (int32_t y = 0; y < imageHeight_; ++y) {
    const uint32_t* image = ImageRow(y);
    auto* out = const_cast<uint8_t*>(ConvertedRow(y));
    if (mode == PixelMode::RGB32) {
      ConvertRowToRgb32(image, imageWidth_, out);
    } else if (mode == PixelMode::RGB565) {
      ConvertRowToRgb565(image, imageWidth_, out);
    } else {
      ConvertRowToYuy2(image, imageWidth_, surfaceWidth_, tables_, out);
    }
  }
  convertedMode_ = mode;
  return 0;
}

void ApplyFontStyle(TextRenderer& renderer, const FontStyle& style, int32_t tv) {
  renderer.SetStyle(style.Face.c_str(), style.CharsetValue(), style.ScaledSize(tv), style.Weight,
                    AlignmentOfXPos(style.XPos), style.Color, style.Transparent);
}

}  // namespace korvalin
