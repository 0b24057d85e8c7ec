#pragma once

#include <optional>

#include <gst/gst.h>
#include <gst/video/video.h>

#include "gst/element_filter.h"
#include "video/video_format.h"

namespace korvalin::gst {

// The element's pad templates: YUY2 in; YUY2, BGRx (our RGB32 byte order) and RGB16
// (RGB565) out.
GstCaps* SinkTemplateCaps();
GstCaps* SourceTemplateCaps();

// The film a fixed YUY2 caps structure describes; none while its size is not fixed.
std::optional<FilmFormat> FilmOfStructure(const GstStructure* s);

// The output structures for one input structure as the filter decided: the framed size, the
// pixel shape and the frame rate of the faster play, in YUY2 and, when offered, BGRx and
// RGB16 (without the colorimetry of YUV).
GstCaps* FramedCaps(const GstStructure* input, const FilmDecision& decision);

// The picture format a negotiated output format stands for; none for other formats.
std::optional<PixelFormat> PixelFormatOf(GstVideoFormat format);

}  // namespace korvalin::gst
