#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "korvalin/commands.h"
#include "korvalin/number_parse.h"
#include "korvalin/subs_json.h"
#include "korvalin/subs_picture_command.h"
#include "settings/settings.h"
#include "subtitles/subtitle_discovery.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin::cli {

const std::string_view kSubsUsage =
    "  subs dump FILE [--lang NAME] [--fps F]\n"
    "                                   print the track a subtitle file loads, as JSON lines\n"
    "  subs find VIDEO [--path SEARCHPATH]\n"
    "                                   list the subtitle files found for a film\n"
    "  subs at FILE TIME_MS ... [--lang NAME] [--fps F]\n"
    "                                   the entry shown at each video time\n"
    "  subs picture FILE INDEX -o OUT.png [--lang NAME]\n"
    "                                   write the picture of entry INDEX as a PNG\n";

namespace {

// Positional arguments and the values of the options a subcommand allows.
struct ParsedArgs {
  std::vector<std::string> positional;
  std::optional<std::string> lang;
  std::optional<std::string> fps;
  std::optional<std::string> path;
};

// Fills parsed; returns an error message, empty on success.
std::string ParseArgs(Args args, std::initializer_list<std::string_view> allowed,
                      ParsedArgs& parsed) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg.size() < 3 || arg.substr(0, 2) != "--") {
      parsed.positional.emplace_back(arg);
      continue;
    }
    bool known = false;
    for (std::string_view option : allowed) known = known || option == arg;
    if (!known) return "unknown option '" + std::string(arg) + "'";
    if (i + 1 >= args.size()) return "option '" + std::string(arg) + "' needs a value";
    const std::string value(args[++i]);
    if (arg == "--lang") parsed.lang = value;
    if (arg == "--fps") parsed.fps = value;
    if (arg == "--path") parsed.path = value;
  }
  return "";
}

std::optional<float> ParseRate(const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(value)) return {};
  return static_cast<float>(value);
}

// Loads FILE the way `dump` and `at` share: preferred language, then the frame rate.
// Returns the load result, or nullopt after reporting a bad --fps.
std::optional<int> LoadTrack(SubtitleTrack& track, const ParsedArgs& parsed,
                             const Settings& settings) {
  std::optional<float> fps;
  if (parsed.fps && !(fps = ParseRate(*parsed.fps))) {
    Fail("--fps needs a number, not '" + *parsed.fps + "'");
    return {};
  }
  track.preferredLanguage.Assign(parsed.lang ? parsed.lang->c_str() : settings.Sub.SubLang.c_str());
  const int result = LoadSubtitleFile(track, parsed.positional[0].c_str());
  if (fps) track.ConvertFramesToMs(*fps);
  return result;
}

// Why a file did not load: it cannot be opened, or no reader takes it.
std::string LoadFailure(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return "cannot open '" + path + "': " + std::strerror(errno);
  std::fclose(file);
  return "cannot read '" + path + "' as a subtitle file";
}

int Dump(Args args) {
  ParsedArgs parsed;
  const std::string error = ParseArgs(args, {"--lang", "--fps"}, parsed);
  if (!error.empty()) return Fail(error);
  if (parsed.positional.size() != 1) return Fail("usage: korvalin subs dump FILE [--lang NAME] [--fps F]");
  const Settings settings;
  SubtitleTrack track;
  const std::optional<int> result = LoadTrack(track, parsed, settings);
  if (!result) return kExitUsage;
  std::cout << TrackSummaryJson(track, *result) << '\n';
  for (const SubtitleEntry* entry : track.entries) std::cout << EntryJson(*entry) << '\n';
  return *result == 0 ? kExitOk : kExitFailed;
}

int Find(Args args) {
  ParsedArgs parsed;
  const std::string error = ParseArgs(args, {"--path"}, parsed);
  if (!error.empty()) return Fail(error);
  if (parsed.positional.size() != 1) return Fail("usage: korvalin subs find VIDEO [--path SEARCHPATH]");
  const Settings settings;
  const std::string searchPath = parsed.path ? *parsed.path : settings.Sub.SubPath.str();
  OwningPtrArray<DynString> files;
  // A player knows its film by a full path; a relative one would leave "." unresolved.
  std::error_code ignored;
  const std::string video = std::filesystem::absolute(parsed.positional[0], ignored).string();
  FindSubtitleFiles(files, searchPath.c_str(), video.c_str());
  for (const DynString* file : files) std::cout << file->c_str() << '\n';
  return kExitOk;
}

// For each video time, the entry the per-frame path would show for a frame starting and
// ending then, with SubSpeed, SubDelay and the file's delay applied.
int At(Args args) {
  ParsedArgs parsed;
  const std::string error = ParseArgs(args, {"--lang", "--fps"}, parsed);
  if (!error.empty()) return Fail(error);
  if (parsed.positional.size() < 2) return Fail("usage: korvalin subs at FILE TIME_MS ...");
  std::vector<int32_t> times;
  for (std::size_t i = 1; i < parsed.positional.size(); ++i) {
    const auto time = ParseInteger(parsed.positional[i], INT32_MIN, INT32_MAX);
    if (!time) return Fail("TIME_MS must be a whole number, not '" + parsed.positional[i] + "'");
    times.push_back(static_cast<int32_t>(*time));
  }
  const Settings settings;
  SubtitleTrack track;
  const std::optional<int> result = LoadTrack(track, parsed, settings);
  if (!result) return kExitUsage;
  if (*result != 0) return Fail(LoadFailure(parsed.positional[0]));
  for (int32_t ms : times) {
    const int32_t t = settings.SubtitleTime(ms);
    const int32_t index = track.framesPending ? -1 : track.FindEntry(t, t);
    if (index != -1) track.currentIndex = index;  // as UpdateForFrame remembers it
    const std::string text = index == -1 ? "" : EscapeJsonBytes(track.entries[index]->text.c_str());
    std::cout << ms << '\t' << index << '\t' << text << '\n';
  }
  return kExitOk;
}

}  // namespace

int RunSubsCommand(Args args) {
  if (args.empty()) return Fail("usage: korvalin subs dump|find|at|picture ...");
  if (args[0] == "dump") return Dump(args.subspan(1));
  if (args[0] == "find") return Find(args.subspan(1));
  if (args[0] == "at") return At(args.subspan(1));
  if (args[0] == "picture") return RunSubsPictureCommand(args.subspan(1));
  return Fail("unknown subs command '" + std::string(args[0]) + "'");
}

}  // namespace korvalin::cli
