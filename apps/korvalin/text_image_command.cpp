#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korvalin/commands.h"
#include "korvalin/number_parse.h"
#include "korvalin/png_writer.h"
#include "render/text_renderer.h"
#include "settings/settings.h"

namespace korvalin::cli {

const std::string_view kTextImageUsage =
    "  text-image TEXT [--style sub|osd] [--width W] -o OUT.png\n"
    "                                   draw a text as the subtitles or the clock would\n";
namespace {

constexpr int32_t kDefaultDrawingWidth = 720;
constexpr int64_t kMaxDrawingWidth = 16384;

struct TextImageRequest {
  std::string text;
  bool clockStyle = false;
  int32_t drawingWidth = kDefaultDrawingWidth;
  std::string output;
};

// "\n" typed as backslash and n is a line break.
std::string WithLineBreaks(std::string_view argument) {
  std::string text;
  for (size_t i = 0; i < argument.size(); ++i) {
    if (argument[i] == '\\' && i + 1 < argument.size() && argument[i + 1] == 'n') {
      text.push_back('\n');
      ++i;
    } else {
      text.push_back(argument[i]);
    }
  }
  return text;
}

// Fills the request, or returns the message for bad arguments.
std::optional<std::string> ParseArguments(Args args, TextImageRequest& request) {
  bool haveText = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    const bool takesValue = arg == "--style" || arg == "--width" || arg == "-o";
    if (takesValue && i + 1 >= args.size()) return "option " + std::string(arg) + " needs a value";
    if (arg == "--style") {
      const std::string_view style = args[++i];
      if (style != "sub" && style != "osd") return "--style must be sub or osd";
      request.clockStyle = style == "osd";
    } else if (arg == "--width") {
      const std::optional<int64_t> width = ParseInteger(args[++i], 1, kMaxDrawingWidth);
      if (!width) return "--width must be a whole number from 1 to 16384";
      request.drawingWidth = static_cast<int32_t>(*width);
    } else if (arg == "-o") {
      request.output = std::string(args[++i]);
    } else if (arg.size() > 1 && arg[0] == '-') {
      return "unknown option '" + std::string(arg) + "'";
    } else if (haveText) {
      return "only one TEXT argument is taken";
    } else {
      request.text = WithLineBreaks(arg);
      haveText = true;
    }
  }
  if (!haveText) return "text-image needs a TEXT";
  if (request.output.empty()) return "text-image needs -o OUT.png";
  return std::nullopt;
}

// The image as RGBA: opaque pixels in their colour, transparent where the word is 0.
std::vector<uint8_t> ImageAsRgba(TextRenderer& renderer) {
  std::vector<uint8_t> rgba;
  rgba.reserve(static_cast<size_t>(renderer.imageWidth()) * renderer.imageHeight() * 4);
  for (int32_t y = 0; y < renderer.imageHeight(); ++y) {
    const uint32_t* row = renderer.ImageRow(y);
    for (int32_t x = 0; x < renderer.imageWidth(); ++x) {
      const uint32_t word = row[x];
      for (int shift = 0; shift < 24; shift += 8) rgba.push_back(uint8_t(word >> shift));
      rgba.push_back(word == 0 ? 0 : 255);
    }
  }
  return rgba;
}

}  // namespace

int RunTextImageCommand(Args args) {
  TextImageRequest request;
  if (std::optional<std::string> error = ParseArguments(args, request)) return Fail(*error);

  const Settings settings;
  // The subtitle track draws on a 720 x 576 surface, the clock on 360 x 288.
  TextRenderer renderer(request.clockStyle ? 360 : 720, request.clockStyle ? 288 : 576);
  ApplyFontStyle(renderer, request.clockStyle ? settings.OSD.style : settings.Sub.style,
                 settings.TV);
  if (renderer.RenderText(request.text.c_str(), request.drawingWidth) != 0) {
    Fail("cannot draw the text at a drawing width of " + std::to_string(request.drawingWidth));
    return kExitFailed;
  }
  const std::string error = WritePng(request.output, renderer.imageWidth(), renderer.imageHeight(),
                                     PngLayout::Rgba, ImageAsRgba(renderer));
  if (!error.empty()) {
    Fail(error);
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace korvalin::cli
