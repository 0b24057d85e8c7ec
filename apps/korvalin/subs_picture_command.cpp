#include "korvalin/subs_picture_command.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korvalin/number_parse.h"
#include "korvalin/png_writer.h"
#include "settings/settings.h"
#include "subtitles/subtitle_loader.h"
#include "subtitles/subtitle_track.h"

namespace korvalin::cli {
namespace {

constexpr std::string_view kUsage =
    "usage: korvalin subs picture FILE INDEX -o OUT.png [--lang NAME]";

struct PictureArgs {
  std::vector<std::string> positional;
  std::optional<std::string> out;
  std::optional<std::string> lang;
};

std::string Parse(Args args, PictureArgs& parsed) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    const bool isOut = arg == "-o" || arg == "--output";
    const bool isLang = arg == "--lang";
    if (!isOut && !isLang) {
      if (arg.size() > 1 && arg[0] == '-' && !(arg[1] >= '0' && arg[1] <= '9')) {
        return "unknown option '" + std::string(arg) + "'";
      }
      parsed.positional.emplace_back(arg);
      continue;
    }
    if (i + 1 >= args.size()) return "option '" + std::string(arg) + "' needs a value";
    (isOut ? parsed.out : parsed.lang) = std::string(args[++i]);
  }
  return "";
}

}  // namespace

int RunSubsPictureCommand(Args args) {
  PictureArgs parsed;
  const std::string error = Parse(args, parsed);
  if (!error.empty()) return Fail(error);
  if (parsed.positional.size() != 2 || !parsed.out) return Fail(kUsage);
  const auto index = ParseInteger(parsed.positional[1], 0, INT32_MAX);
  if (!index)
    return Fail("INDEX must be a whole number from 0, not '" + parsed.positional[1] + "'");

  const Settings settings;
  SubtitleTrack track;
  track.preferredLanguage.Assign(parsed.lang ? parsed.lang->c_str() : settings.Sub.SubLang.c_str());
  if (LoadSubtitleFile(track, parsed.positional[0].c_str()) != 0) {
    Fail("cannot read '" + parsed.positional[0] + "' as a subtitle file");
    return kExitFailed;
  }
  if (static_cast<std::size_t>(*index) >= track.entries.Count()) {
    Fail("entry " + std::to_string(*index) + " does not exist (the file has " +
         std::to_string(track.entries.Count()) + ")");
    return kExitFailed;
  }
  const SubtitleEntry& entry = *track.entries[static_cast<std::size_t>(*index)];
  if (entry.kind != SubtitleEntryKind::Picture || !entry.picture || !entry.picture->HasPixels()) {
    Fail("entry " + std::to_string(*index) + " holds no picture");
    return kExitFailed;
  }
  const Picture& picture = *entry.picture;
  std::vector<uint8_t> greyAlpha;
  greyAlpha.reserve(picture.pixels.size() * 2);
  for (uint8_t v : picture.pixels) {
    greyAlpha.push_back(v);
    greyAlpha.push_back(v == 0 ? 0 : 255);
  }
  const std::string written =
      WritePng(*parsed.out, picture.width, picture.height, PngLayout::GreyAlpha, greyAlpha);
  if (!written.empty()) return Fail(written);
  return kExitOk;
}

}  // namespace korvalin::cli
