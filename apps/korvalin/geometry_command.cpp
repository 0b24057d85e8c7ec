#include <iostream>
#include <optional>
#include <string>

#include "filter/picture_geometry.h"
#include "korvalin/commands.h"
#include "korvalin/number_parse.h"
#include "settings/settings.h"

namespace korvalin::cli {

const std::string_view kGeometryUsage =
    "  geometry WxH [--subtitles] [--picture-aspect X:Y]\n"
    "                                   print the output geometry for an input size\n";

namespace {

struct Pair {
  int64_t first;
  int64_t second;
};

// "AxB" (or "A:B" with separator ':') of two numbers in [1, max].
std::optional<Pair> ParsePair(std::string_view text, char separator, int64_t max) {
  const auto at = text.find(separator);
  if (at == std::string_view::npos) return {};
  const auto a = ParseInteger(text.substr(0, at), 1, max);
  const auto b = ParseInteger(text.substr(at + 1), 1, max);
  if (!a || !b) return {};
  return Pair{*a, *b};
}

}  // namespace

int RunGeometryCommand(Args args) {
  std::optional<Pair> size;
  std::optional<Pair> pictureAspect;
  bool subtitles = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg == "--subtitles") {
      subtitles = true;
    } else if (arg == "--picture-aspect") {
      if (i + 1 >= args.size()) return Fail("geometry: --picture-aspect needs X:Y");
      pictureAspect = ParsePair(args[++i], ':', UINT32_MAX);
      if (!pictureAspect) return Fail("geometry: bad picture aspect '" + std::string(args[i]) + "'");
    } else if (!size) {
      size = ParsePair(arg, 'x', 32768);
      if (!size) return Fail("geometry: expected WIDTHxHEIGHT, got '" + std::string(arg) + "'");
    } else {
      return Fail("geometry: unexpected argument '" + std::string(arg) + "'");
    }
  }
  if (!size) return Fail("geometry: expected WIDTHxHEIGHT");

  const Settings settings;
  const auto width = static_cast<int32_t>(size->first);
  const auto height = static_cast<int32_t>(size->second);
  // Only a picture aspect of the input's own format (extended overlay, no fixed clip shape)
  // tells non-square pixels; otherwise pixels are square.
  float sourceAspect = 0;
  if (pictureAspect && settings.Overlay && settings.AspectComp == 0) {
    sourceAspect = SourceAspectFromFormat(width, height, static_cast<uint32_t>(pictureAspect->first),
                                          static_cast<uint32_t>(pictureAspect->second));
  }
  const bool clockShown = settings.OSD.OSDVideoTime != 0 || settings.OSD.OSDWorldTime != 0;
  const PictureGeometry geometry(settings, sourceAspect, subtitles || clockShown);
  const FrameGeometry g = geometry.Propose(width, height);
  std::cout << "copyWidth=" << g.copyWidth << " inputLeft=" << g.inputLeft
            << " leftBorder=" << g.leftBorder << " rightBorder=" << g.rightBorder
            << " outputWidth=" << g.outputWidth << " outputHeight=" << g.outputHeight
            << " pictureTop=" << g.pictureTop << '\n';
  return kExitOk;
}

}  // namespace korvalin::cli
