#pragma once

#include <cstdint>

#include "host/format_blocks.h"
#include "host/media_type.h"

namespace korvalin {

// A packed YUY2 video type in a VIDEOINFOHEADER: what a source of uncompressed frames offers.
host::AM_MEDIA_TYPE Yuy2VideoType(int32_t width, int32_t height,
                                  host::REFERENCE_TIME avgTimePerFrame);

}  // namespace korvalin
