#pragma once

#include <cstdint>
#include <vector>

#include "render/text_renderer.h"

namespace korvalin {

// A renderer's image as one vector, row after row.
inline std::vector<uint32_t> Image(TextRenderer& r) {
  std::vector<uint32_t> all;
  for (int32_t y = 0; y < r.imageHeight(); ++y)
    all.insert(all.end(), r.ImageRow(y), r.ImageRow(y) + r.imageWidth());
  return all;
}

}  // namespace korvalin
