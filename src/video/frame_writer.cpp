#include "video/frame_writer.h"

#include <cstdlib>

#include "video/frame_row.h"
#include "video/pixel_size.h"
#include "video/row_writer.h"

namespace korvalin {

namespace {

// Whether a buffer of `size` bytes holds the packed frame `format` describes, with
// `bytesPerPixel` matching the format's bit depth.
bool BufferHoldsFrame(size_t size, const VideoFormat& format, int32_t bytesPerPixel) {
  if (format.biWidth < 0 || format.biBitCount != bytesPerPixel * 8) return false;
  const uint64_t pixels = uint64_t(format.biWidth) * uint64_t(std::llabs(int64_t{format.biHeight}));
  return pixels <= size / static_cast<uint64_t>(bytesPerPixel);
}

}  // namespace

int WriteFrame(const InputFrame& input, const OutputFrame& output, const FrameGeometry& geometry,
               int32_t flip, int32_t borderRefresh, const ColorTables& tables,
               const Yuy2ToRgbKernels& kernels) {
  if (input.format == nullptr || output.format == nullptr || !geometry.Drawable()) return -1;
  const VideoFormat& in = *input.format;
  const VideoFormat& out = *output.format;
  if (!BufferHoldsFrame(input.size, in, 2) ||
      !BufferHoldsFrame(output.size, out, BytesPerPixel(output.pixelFormat))) {
    return -1;
  }
  if (out.biWidth == 0) return 0;
  const int64_t rows = std::llabs(int64_t{out.biHeight});
  for (int64_t r = 0; r < rows; ++r) {
    const int64_t inputRow = r - geometry.pictureTop;
    const uint8_t* inRow =
        inputRow >= INT32_MIN && inputRow <= INT32_MAX
            ? FrameRow(input.data, static_cast<int32_t>(inputRow), in, (flip & kFlipInput) != 0)
            : nullptr;
    uint8_t* outRow =
        FrameRow(output.data, static_cast<int32_t>(r), out, (flip & kFlipOutput) != 0);
    WriteRow({outRow, out.biWidth}, {inRow, in.biWidth}, geometry, borderRefresh,
             output.pixelFormat, tables, kernels);
  }
  return 0;
}

}  // namespace korvalin
