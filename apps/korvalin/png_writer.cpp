#include "korvalin/png_writer.h"

#include <png.h>

#include <cstring>

namespace korvalin::cli {

std::string WritePng(const std::string& file, int32_t width, int32_t height, PngLayout layout,
                     std::span<const uint8_t> pixels) {
  const int32_t channels = layout == PngLayout::Rgba ? 4 : 2;
  if (width <= 0 || height <= 0) return "an image needs at least one pixel";
  if (pixels.size() < static_cast<size_t>(width) * height * channels) {
    return "fewer pixels than the image size";
  }
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = layout == PngLayout::Rgba ? PNG_FORMAT_RGBA : PNG_FORMAT_GA;
  const int ok =
      png_image_write_to_file(&image, file.c_str(), 0, pixels.data(), width * channels, nullptr);
  if (ok != 0) return "";
  const std::string message(image.message);
  png_image_free(&image);
  return message.empty() ? "cannot write " + file : message;
}

}  // namespace korvalin::cli
