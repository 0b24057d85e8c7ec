#include "gst/film_caps.h"

#include <string_view>

#include "gst/time_scale.h"


namespace korvalin::gst {

namespace {

constexpr const char* kOutputFormats[] = {"YUY2", "BGRx", "RGB16"};

// The frame rate once `clockRate` speeds the film up.
void SpeedUpFrameRate(GstStructure* s, int32_t clockRate) {
  int n = 0, d = 1;
  if (clockRate < 1 || !gst_structure_get_fraction(s, "framerate", &n, &d) || n <= 0) return;
  int outN = 0, outD = 1;
  TimeScale::ForFilm(clockRate, n, d).ScaleFrameRate(n, d, &outN, &outD);
  gst_structure_set(s, "framerate", GST_TYPE_FRACTION, outN, outD, nullptr);
}

}  // namespace

GstCaps* SinkTemplateCaps() {
  return gst_caps_from_string(GST_VIDEO_CAPS_MAKE("YUY2"));
}

GstCaps* SourceTemplateCaps() {
  return gst_caps_from_string(GST_VIDEO_CAPS_MAKE("{ YUY2, BGRx, RGB16 }"));
}

std::optional<FilmFormat> FilmOfStructure(const GstStructure* s) {
  FilmFormat film;
  if (!gst_structure_get_int(s, "width", &film.width) ||
      !gst_structure_get_int(s, "height", &film.height) || film.width <= 0 ||
      film.height <= 0) {
    return std::nullopt;
  }
  int n = 0, d = 1;
  if (gst_structure_get_fraction(s, "framerate", &n, &d) && n > 0 && d > 0) {
    film.rateNumerator = n;
    film.rateDenominator = d;
  }
  if (gst_structure_get_fraction(s, "pixel-aspect-ratio", &n, &d) && n > 0 && d > 0) {
    film.pixelAspectNumerator = n;
    film.pixelAspectDenominator = d;
  }
  return film;
}

GstCaps* FramedCaps(const GstStructure* input, const FilmDecision& decision) {
  GstCaps* caps = gst_caps_new_empty();
  for (const char* format : kOutputFormats) {
    const bool yuv = std::string_view(format) == "YUY2";
    if (!yuv && !decision.rgbOffered) continue;
    GstStructure* s = gst_structure_copy(input);
    gst_structure_set(s, "format", G_TYPE_STRING, format, "width", G_TYPE_INT,
                      decision.shape.width, "height", G_TYPE_INT, decision.shape.height,
                      "pixel-aspect-ratio", GST_TYPE_FRACTION,
                      decision.shape.pixelAspectNumerator,
                      decision.shape.pixelAspectDenominator, nullptr);
    if (!yuv) gst_structure_remove_fields(s, "colorimetry", "chroma-site", nullptr);
    SpeedUpFrameRate(s, decision.clockRate);
    gst_caps_append_structure(caps, s);
  }
  return caps;
}

std::optional<PixelFormat> PixelFormatOf(GstVideoFormat format) {
  switch (format) {
    case GST_VIDEO_FORMAT_YUY2:
      return PixelFormat::YUY2;
    case GST_VIDEO_FORMAT_BGRx:
      return PixelFormat::RGB32;
    case GST_VIDEO_FORMAT_RGB16:
      return PixelFormat::RGB565;
    default:
      return std::nullopt;
  }
}

}  // namespace korvalin::gst
