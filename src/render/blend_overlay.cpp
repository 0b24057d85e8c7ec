#include "render/blend_overlay.h"

#include <algorithm>
#include <cstring>

#include "render/overlay_placement.h"
#include "video/frame_row.h"

namespace korvalin {
namespace {

// A frame row that lies wholly inside its buffer, with the pixels it can hold.
struct CheckedRow {
  uint8_t* bytes = nullptr;
  int32_t pixels = 0;
};

CheckedRow RowOf(const OverlayFrame& frame, int32_t row, int32_t bytesPerPixel) {
  if (frame.format == nullptr || frame.bytes.empty()) return {};
  const VideoFormat& format = *frame.format;
  const int64_t stride = int64_t{std::max(format.biWidth, 0)} * (format.biBitCount >> 3);
  uint8_t* start = FrameRow(frame.bytes.data(), row, format, frame.flipped);
  if (start == nullptr || stride == 0) return {};
  const int64_t offset = start - frame.bytes.data();
  if (offset < 0 || offset + stride > static_cast<int64_t>(frame.bytes.size())) return {};
  return {start, static_cast<int32_t>(std::min<int64_t>(format.biWidth, stride / bytesPerPixel))};
}

PixelMode ModeOf(PixelFormat subtype) {
  switch (subtype) {
    case PixelFormat::YUY2:
      return PixelMode::YUY2;
    case PixelFormat::RGB32:
      return PixelMode::RGB32;
    case PixelFormat::RGB565:
      return PixelMode::RGB565;
  }
  return PixelMode::None;
}

// The columns [first, last) of a run of `columns` pixels starting at output column
// outColumn that lie inside the row.
struct ColumnRange {
  int32_t first;
  int32_t last;
};
ColumnRange InsideRow(int32_t columns, int32_t outColumn, int32_t rowPixels) {
  const int64_t first = std::max<int64_t>(0, -int64_t{outColumn});
  const int64_t last = std::min<int64_t>(columns, int64_t{rowPixels} - outColumn);
  return {static_cast<int32_t>(first), static_cast<int32_t>(std::max(first, last))};
}

// RGB32 and RGB565: every non-zero source pixel replaces the output pixel.
template <typename Pixel>
void BlendRgbRow(const uint8_t* source, int32_t columns, const CheckedRow& out, int32_t outColumn,
                 Pixel padding = 0) {
  const ColumnRange range = InsideRow(columns, outColumn, out.pixels);
  for (int32_t i = range.first; i < range.last; ++i) {
    Pixel pixel;
    std::memcpy(&pixel, source + i * sizeof(Pixel), sizeof(Pixel));
    if (pixel == 0) continue;
    pixel |= padding;
    std::memcpy(out.bytes + (int64_t{outColumn} + i) * sizeof(Pixel), &pixel, sizeof(Pixel));
  }
}

// YUY2: whole pairs are copied; in a half-covered pair the uncovered pixel keeps its luma
// and the chroma becomes the mean of the image's and the picture's (input) chroma.
void BlendYuy2Row(const uint8_t* source, int32_t columns, const CheckedRow& out, int32_t outColumn,
                  const CheckedRow& in, int32_t inColumn) {
  for (int32_t pair = 0; pair < (columns + 1) / 2; ++pair, source += 4) {
    const int32_t column = outColumn + 2 * pair;
    if (column < 0 || column + 1 >= out.pixels) continue;
    if (source[0] == 0 && source[1] == 0 && source[2] == 0 && source[3] == 0) continue;
    uint8_t* d = out.bytes + int64_t{column} * 2;
    if (source[0] != 0 && source[2] != 0) {
      std::memcpy(d, source, 4);
      continue;
    }
    const int32_t inPair = inColumn + 2 * pair;
    const bool hasInput = in.bytes != nullptr && inPair >= 0 && inPair + 1 < in.pixels;
    const uint8_t* i = hasInput ? in.bytes + int64_t{inPair} * 2 : nullptr;
    const int32_t inU = i != nullptr ? i[1] : 128, inV = i != nullptr ? i[3] : 128;
    if (source[0] != 0) d[0] = source[0];
    if (source[2] != 0) d[2] = source[2];
    d[1] = static_cast<uint8_t>((source[1] + inU) / 2);
    d[3] = static_cast<uint8_t>((source[3] + inV) / 2);
  }
}

}  // namespace

int BlendOverlay(TextRenderer& renderer, int32_t xPos, int32_t yPos, const OverlayTarget& target) {
  const PixelMode mode = ModeOf(target.outputSubtype);
  if (mode == PixelMode::None || target.output.format == nullptr) return -1;
  const OverlayPlacement place =
      PlaceOverlay(xPos, yPos, renderer.imageWidth(), renderer.imageHeight(), target.drawingWidth,
                   target.output.format->biHeight);
  if (renderer.ConvertTo(mode) != 0) return -1;
  if (place.visible <= 0) return 0;

  const int32_t bytesPerPixel = mode == PixelMode::RGB32 ? 4 : 2;
  const int64_t outColumn = int64_t{place.x} + target.leftBorder;
  const int64_t inColumn = int64_t{place.x} + target.inputLeft;
  if (outColumn > INT32_MAX || inColumn > INT32_MAX || outColumn < INT32_MIN ||
      inColumn < INT32_MIN) {
    return 0;
  }
  for (int32_t r = 0; r < renderer.imageHeight(); ++r) {
    const int64_t outRowIndex = int64_t{place.y} + r;
    if (outRowIndex > INT32_MAX) break;
    const CheckedRow out = RowOf(target.output, static_cast<int32_t>(outRowIndex), bytesPerPixel);
    if (out.bytes == nullptr) continue;
    const uint8_t* source = renderer.ConvertedRow(r) + int64_t{place.skip} * bytesPerPixel;
    if (mode != PixelMode::YUY2) {
      if (mode == PixelMode::RGB32) {
        BlendRgbRow<uint32_t>(source, place.visible, out, static_cast<int32_t>(outColumn),
                              uint32_t{target.rgb32Padding} << 24);
      } else {
        BlendRgbRow<uint16_t>(source, place.visible, out, static_cast<int32_t>(outColumn));
      }
      continue;
    }
    const int64_t inRowIndex = outRowIndex - target.pictureTop;
    const CheckedRow in = inRowIndex < INT32_MIN || inRowIndex > INT32_MAX
                              ? CheckedRow{}
                              : RowOf(target.input, static_cast<int32_t>(inRowIndex), 2);
    const bool inBorder = in.bytes == nullptr;  // above or below the picture
    if (inBorder && target.borderRefresh == 0) continue;
    BlendYuy2Row(source, place.visible, out, static_cast<int32_t>(outColumn), in,
                 static_cast<int32_t>(inColumn));
  }
  return 0;
}

}  // namespace korvalin
