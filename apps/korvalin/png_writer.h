#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace korvalin::cli {

enum class PngLayout {
  Rgba,       // 4 bytes per pixel: red, green, blue, alpha
  GreyAlpha,  // 2 bytes per pixel: grey, alpha
};

// Writes an 8-bit PNG from packed pixel rows, top row first. Returns "" on success, else
// what went wrong.
std::string WritePng(const std::string& file, int32_t width, int32_t height, PngLayout layout,
                     std::span<const uint8_t> pixels);

}  // namespace korvalin::cli
