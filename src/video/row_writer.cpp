#include "video/row_writer.h"

#include <algorithm>
#include <cstring>

#include "video/black_fill.h"
#include "video/pixel_size.h"

namespace korvalin {

namespace {

int64_t RoundUpToMultiple(int64_t value, int64_t multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

// Bytes the input row really holds from byte `start` on; none before the row's start.
int64_t InputBytesFrom(const InputRow& in, int64_t start) {
  const int64_t rowBytes = std::max<int64_t>(in.width, 0) * 2;
  if (start < 0 || start >= rowBytes) return 0;
  return rowBytes - start;
}

// Copies the YUY2 slice to output pixel `at`; returns the pixels the picture spans.
int64_t CopySlice(OutputRow out, int64_t at, InputRow in, const FrameGeometry& geometry) {
  const int64_t start = int64_t{geometry.inputLeft} * 2;
  const int64_t wanted = std::max<int64_t>(geometry.copyWidth, 0);
  const int64_t room = std::max<int64_t>(out.width - at, 0);
  const int64_t bytes = std::min({wanted * 2, InputBytesFrom(in, start), room * 2});
  if (bytes > 0) std::memcpy(out.data + at * 2, in.data + start, static_cast<size_t>(bytes));
  // A slice reaching past the input row's end leaves the rest of the picture black.
  const int64_t copied = bytes / 2;
  FillBlack(out.data, out.width, at + copied, wanted - copied, PixelFormat::YUY2);
  return wanted;
}

// Converts the slice to RGB at output pixel `at`, a whole macro-pixel per pixel pair;
// returns the pixels the picture spans.
int64_t ConvertSlice(OutputRow out, int64_t at, InputRow in, const FrameGeometry& geometry,
                     PixelFormat format, const ColorTables& tables,
                     const Yuy2ToRgbKernels& kernels) {
  const int64_t start = int64_t{geometry.inputLeft} * 2;
  const int64_t wanted = RoundUpToMultiple(std::max<int64_t>(geometry.copyWidth, 0), 2);
  const int64_t fromInput = std::min(wanted, InputBytesFrom(in, start) / 4 * 2);
  const int64_t room = std::max<int64_t>(out.width - at, 0);
  const int64_t pixels = std::min(fromInput, room);
  const Yuy2ToRgbFunction convert =
      format == PixelFormat::RGB32 ? kernels.toRgb32 : kernels.toRgb565;
  if (pixels > 0) {
    convert(in.data + start, out.data + at * BytesPerPixel(format), static_cast<int32_t>(pixels),
            tables);
  }
  FillBlack(out.data, out.width, at + pixels, wanted - pixels, format);
  return wanted;
}

}  // namespace

void WriteRow(OutputRow out, InputRow in, const FrameGeometry& geometry, int32_t borderRefresh,
              PixelFormat format, const ColorTables& tables, const Yuy2ToRgbKernels& kernels) {
  const bool writeBorders = borderRefresh != 0;
  if (in.data == nullptr) {
    if (writeBorders) FillBlack(out.data, out.width, 0, out.width, format);
    return;
  }
  // Borders are whole black units, so in the paired formats the picture starts on a pixel
  // pair even when the border is odd, and the same place is skipped when borders are kept.
  const int64_t unit = PixelsPerBlackUnit(format);
  const int64_t left = RoundUpToMultiple(std::max<int64_t>(geometry.leftBorder, 0), unit);
  if (writeBorders) FillBlack(out.data, out.width, 0, left, format);

  const int64_t picture = format == PixelFormat::YUY2
                              ? CopySlice(out, left, in, geometry)
                              : ConvertSlice(out, left, in, geometry, format, tables, kernels);
  if (writeBorders) {
    const int64_t right = RoundUpToMultiple(std::max<int64_t>(geometry.rightBorder, 0), unit);
    FillBlack(out.data, out.width, left + picture, right, format);
  }
}

}  // namespace korvalin
