#include "korvalin/render_outputs.h"

#include <cstring>

#include "korvalin/png_writer.h"
#include "video/color_tables.h"
#include "video/yuy2_to_rgb.h"

namespace korvalin::cli {

namespace {

// Expands a 5- or 6-bit channel to 8 bits, the top bits repeated into the bottom.
uint8_t Expand(uint32_t value, int bits) {
  return static_cast<uint8_t>((value << (8 - bits)) | (value >> (2 * bits - 8)));
}

void Rgb32ToRgba(const uint8_t* in, uint8_t* out, std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i, in += 4, out += 4) {
    out[0] = in[2];
    out[1] = in[1];
    out[2] = in[0];
    out[3] = 255;
  }
}

void Rgb565ToRgba(const uint8_t* in, uint8_t* out, std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i, in += 2, out += 4) {
    const uint32_t v = in[0] | (uint32_t{in[1]} << 8);
    out[0] = Expand(v >> 11, 5);
    out[1] = Expand((v >> 5) & 0x3F, 6);
    out[2] = Expand(v & 0x1F, 5);
    out[3] = 255;
  }
}

}  // namespace

std::vector<uint8_t> FrameToRgba(const SinkFrame& frame) {
  const std::size_t pixels = std::size_t(frame.width) * std::size_t(frame.height);
  std::vector<uint8_t> rgba(pixels * 4);
  switch (frame.format) {
    case PixelFormat::RGB32:
      Rgb32ToRgba(frame.pixels.data(), rgba.data(), pixels);
      break;
    case PixelFormat::RGB565:
      Rgb565ToRgba(frame.pixels.data(), rgba.data(), pixels);
      break;
    case PixelFormat::YUY2: {
      static const ColorTables tables;
      std::vector<uint8_t> rgb32(pixels * 4);
      const std::size_t stride = std::size_t(frame.width) * 2;
      for (int32_t row = 0; row < frame.height; ++row) {
        Yuy2ToRgb32Scalar(frame.pixels.data() + row * stride,
                          rgb32.data() + std::size_t(row) * frame.width * 4, frame.width, tables);
      }
      Rgb32ToRgba(rgb32.data(), rgba.data(), pixels);
      break;
    }
  }
  return rgba;
}

Y4mFileOutput::~Y4mFileOutput() {
  Finish();
}

bool Y4mFileOutput::Begin(const RenderStart& start) {
  file_ = path_ == "-" ? stdout : std::fopen(path_.c_str(), "wb");
  if (file_ == nullptr) return false;
  writer_ = std::make_unique<Y4mWriter>(file_);
  return writer_->WriteHeader(start.outputWidth, start.outputHeight,
                              static_cast<int32_t>(start.rateNumerator),
                              static_cast<int32_t>(start.rateDenominator));
}

bool Y4mFileOutput::Write(const SinkFrame& frame) {
  return writer_ != nullptr && writer_->WriteFrame(frame.pixels);
}

bool Y4mFileOutput::Finish() {
  if (file_ == nullptr) return true;
  bool ok = std::fflush(file_) == 0 && std::ferror(file_) == 0;
  if (file_ != stdout) ok = std::fclose(file_) == 0 && ok;
  file_ = nullptr;
  return ok;
}

bool PngFolderOutput::Begin() {
  std::error_code error;
  std::filesystem::create_directories(folder_, error);
  if (error || !std::filesystem::is_directory(folder_)) {
    error_ = "cannot make the folder " + folder_.string();
    return false;
  }
  return true;
}

bool PngFolderOutput::Write(const SinkFrame& frame) {
  char name[32];
  std::snprintf(name, sizeof name, "frame-%06lld.png", static_cast<long long>(next_++));
  const std::vector<uint8_t> rgba = FrameToRgba(frame);
  error_ = WritePng((folder_ / name).string(), frame.width, frame.height, PngLayout::Rgba, rgba);
  return error_.empty();
}

}  // namespace korvalin::cli
