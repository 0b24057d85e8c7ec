#include "filter/picture_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "base/saturating_cast.h"

namespace korvalin {

namespace {

constexpr float kTvAspect[2] = {4.0f / 3.0f, 16.0f / 9.0f};
constexpr float kClipAspect[4] = {0.0f, 1.25f, 1.5f, 1.0f};

// Floating-point results become pixels by truncation toward zero.
// Far beyond any picture, yet with room for the even rounding and the sums that follow, so
// a hostile aspect ratio gives a nonsense size but never an overflow.
constexpr double kPixelLimit = 1 << 30;

int32_t Trunc(double value) {
  return SaturatingCast<int32_t>(std::clamp(value, -kPixelLimit, kPixelLimit));
}

int32_t Even(int32_t value) { return value & ~1; }

}  // namespace

int32_t PictureGeometry::CompensateHeight(int32_t h) const {
  if (!settings_.Overlay) return h;
  if (settings_.AspectComp > 0) {
    if (settings_.aspectRatio <= 0 || settings_.AspectComp > 3) return h;
    return Trunc(double{kClipAspect[settings_.AspectComp]} / settings_.aspectRatio * h + 0.5);
  }
  if (sourceAspect_ != 0) return Trunc(h * double{sourceAspect_} + 0.5);
  return h;
}

int32_t PictureGeometry::CopyWidth(int32_t width, int32_t height) const {
  const int32_t whole = Even(width);
  if (!settings_.bFill) return whole;
  int32_t c = Trunc(CompensateHeight(height) * double{kTvAspect[settings_.TV & 1]} * 100.0 /
                    settings_.Fill);
  if (c & 1) c += 1;
  return c < whole ? c : whole;
}

int32_t PictureGeometry::BorderWidth(int32_t copyWidth) const {
  if (!settings_.bOverscan) return 0;
  int32_t b = settings_.Overscan * copyWidth / 200;
  if (b & 1) b += 1;
  return b;
}

int32_t PictureGeometry::OutputHeight(int32_t copyWidth, int32_t height) const {
  const double tvAspect = kTvAspect[settings_.TV & 1];
  // A frame height in display proportions, turned back into input rows.
  auto inInputRows = [this](int32_t rows) {
    if (rows == 0) return rows;
    const int32_t compensated = CompensateHeight(rows);
    if (compensated == 0) return rows;
    return Trunc(static_cast<double>(rows) * rows / compensated + 0.5);
  };
  int32_t h = std::abs(height);
  if (settings_.bFill2 && overlaysShown_) {
    const int32_t t = inInputRows(Trunc(copyWidth / tvAspect + 0.5));
    if (t > h) h = t;
  }
  if (settings_.bFillH) {
    const int32_t v = inInputRows(Trunc(copyWidth / tvAspect * 100.0 / settings_.FillH + 0.5));
    return v < h ? v : h;
  }
  return h;
}

FrameGeometry PictureGeometry::Propose(int32_t inputWidth, int32_t inputHeight) const {
  const int32_t rows = std::abs(inputHeight);
  const int32_t copyWidth = CopyWidth(inputWidth, rows);
  const int32_t outputWidth = copyWidth + 2 * BorderWidth(copyWidth);
  return ForFrame(inputWidth, inputHeight, outputWidth, OutputHeight(copyWidth, rows));
}

FrameGeometry PictureGeometry::ForFrame(int32_t inputWidth, int32_t inputHeight,
                                        int32_t outputWidth, int32_t outputHeight) const {
  FrameGeometry g;
  const int32_t inputRows = std::abs(inputHeight);
  g.copyWidth = CopyWidth(inputWidth, inputRows);
  g.inputLeft = Even((inputWidth - g.copyWidth) / 2);
  g.leftBorder = BorderWidth(g.copyWidth);
  g.rightBorder = outputWidth - g.leftBorder - g.copyWidth;
  g.outputWidth = outputWidth;
  g.outputHeight = std::abs(outputHeight);
  g.pictureTop = (g.outputHeight - inputRows) / 2 + settings_.YShift;
  return g;
}

float SourceAspectFromFormat(int32_t biWidth, int32_t biHeight, uint32_t pictAspectX,
                             uint32_t pictAspectY) {
  const double a = std::fabs(static_cast<double>(biWidth) * pictAspectY);
  const double b = std::fabs(static_cast<double>(biHeight) * pictAspectX);
  if (a < 1 || b < 1) return 0;
  return static_cast<float>(a / b);
}

}  // namespace korvalin
