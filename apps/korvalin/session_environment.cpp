#include "korvalin/session_environment.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace korvalin::cli {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPathVariable = "GST_PLUGIN_PATH_1_0";
constexpr std::string_view kRankVariable = "GST_PLUGIN_FEATURE_RANK";
constexpr std::string_view kRaisedRanks = "korvalinvideosink:MAX,korvalinaudiosink:MAX";
constexpr std::string_view kHeader =
    "# Written by `korvalin register --gstreamer`: GStreamer players find Korvalin's plugin\n"
    "# and pick its sinks. `korvalin unregister --gstreamer` removes this file.\n";
// Characters an unquoted environment.d value cannot carry as themselves.
constexpr std::string_view kUnsafeCharacters = " \t\n\"'\\$`";

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

fs::path HomeFolder() {
  if (const std::string home = Environment("HOME"); !home.empty()) return home;
  struct passwd entry {};
  struct passwd* found = nullptr;
  char buffer[4096];
  if (::getpwuid_r(::getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found &&
      found->pw_dir != nullptr) {
    return found->pw_dir;
  }
  return ".";
}

bool HoldsPlugin(const fs::path& folder) {
  std::error_code error;
  return fs::is_regular_file(folder / kGstPluginFileName, error);
}

fs::path ToolFolder() {
  std::error_code error;
  const fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::path() : self.parent_path();
}

// The variable's value in the session, after `separator`, when the session sets it.
std::string Keeping(std::string_view variable, char separator) {
  const std::string name(variable);
  return "${" + name + ":+" + separator + "$" + name + "}";
}

std::string FileText(const fs::path& pluginFolder) {
  std::string text(kHeader);
  for (const std::string& assignment : SessionAssignments(pluginFolder)) text += assignment + "\n";
  return text;
}

// Writes, flushes to the disk and closes; false on any failure.
bool WriteAll(const fs::path& file, const std::string& text) {
  const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  bool written = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  written = ::fsync(fd) == 0 && written;
  return ::close(fd) == 0 && written;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) {
    return std::toupper(static_cast<unsigned char>(x)) ==
           std::toupper(static_cast<unsigned char>(y));
  });
}

bool RankAboveNone(std::string_view rank) {
  for (std::string_view named : {"MARGINAL", "SECONDARY", "PRIMARY", "MAX"}) {
    if (EqualsIgnoringCase(rank, named)) return true;
  }
  long value = 0;
  const auto [end, error] = std::from_chars(rank.data(), rank.data() + rank.size(), value);
  return error == std::errc() && end == rank.data() + rank.size() && value > 0;
}

}  // namespace

fs::path SessionEnvironmentFile() {
  const std::string config = Environment("XDG_CONFIG_HOME");
  // The XDG base directory rules ignore a relative path.
  const fs::path base =
      !config.empty() && config.front() == '/' ? fs::path(config) : HomeFolder() / ".config";
  return base / "environment.d" / "60-korvalin.conf";
}

fs::path DefaultPluginFolder() {
  const fs::path tool = ToolFolder();
  const fs::path prefix = tool.parent_path();
  for (const fs::path& folder :
       {tool / "gst-plugins", prefix / "lib/x86_64-linux-gnu/gstreamer-1.0",
        prefix / "lib64/gstreamer-1.0", prefix / "lib/gstreamer-1.0"}) {
    std::error_code error;
    if (HoldsPlugin(folder)) return fs::canonical(folder, error);
  }
  return {};
}

PluginFolderCheck CheckPluginFolder(const fs::path& folder) {
  std::error_code error;
  const fs::path absolute = fs::canonical(folder, error);
  if (error || !fs::is_directory(absolute, error)) return {{}, "no folder " + folder.string()};
  if (!HoldsPlugin(absolute))
    return {{}, absolute.string() + " holds no " + std::string(kGstPluginFileName)};
  if (absolute.string().find_first_of(kUnsafeCharacters) != std::string::npos)
    return {{},
            "the path " + absolute.string() + " has characters an environment.d line " +
                "cannot hold (spaces, quotes, $, backslashes)"};
  return {absolute, ""};
}

std::vector<std::string> SessionAssignments(const fs::path& pluginFolder) {
  return {
      std::string(kPathVariable) + "=" + pluginFolder.string() + Keeping(kPathVariable, ':'),
      std::string(kRankVariable) + "=" + std::string(kRaisedRanks) + Keeping(kRankVariable, ',')};
}

std::optional<std::string> WriteSessionEnvironment(const fs::path& file,
                                                   const fs::path& pluginFolder) {
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  if (error) return "cannot create " + file.parent_path().string() + ": " + error.message();
  fs::path temporary = file;
  temporary += ".tmp-" + std::to_string(::getpid());
  if (!WriteAll(temporary, FileText(pluginFolder))) {
    fs::remove(temporary, error);
    return "cannot write " + temporary.string();
  }
  fs::rename(temporary, file, error);
  if (!error) return {};
  fs::remove(temporary, error);
  return "cannot replace " + file.string();
}

bool RemoveSessionEnvironment(const fs::path& file, std::string* error) {
  std::error_code code;
  const bool removed = fs::remove(file, code);
  *error = code ? "cannot remove " + file.string() + ": " + code.message() : "";
  return removed;
}

fs::path RegisteredPluginFolder(const fs::path& file) {
  std::ifstream in(file);
  const std::string prefix = std::string(kPathVariable) + "=";
  for (std::string line; std::getline(in, line);) {
    if (!line.starts_with(prefix)) continue;
    const std::string value = line.substr(prefix.size());
    return value.substr(0, value.find("${"));
  }
  return {};
}

std::string GstreamerSinksStatus() {
  const fs::path file = SessionEnvironmentFile();
  std::error_code error;
  std::string status = "GStreamer sinks: ";
  if (!fs::exists(file, error)) {
    status += "not registered";
  } else if (const fs::path folder = RegisteredPluginFolder(file); !HoldsPlugin(folder)) {
    status += "registered (" + file.string() + ") but " +
              (folder.empty() ? "it names no plugin folder"
                              : folder.string() + " holds no " + std::string(kGstPluginFileName));
  } else {
    status += "active (" + file.string() + ")";
  }
  if (RaisesVideoSink(Environment(std::string(kRankVariable).c_str())))
    status += "; active in this session";
  return status;
}

bool RaisesVideoSink(std::string_view featureRank) {
  bool raised = false;
  std::istringstream entries{std::string(featureRank)};
  for (std::string entry; std::getline(entries, entry, ',');) {
    const std::size_t colon = entry.find(':');
    if (colon != std::string::npos && entry.substr(0, colon) == "korvalinvideosink")
      raised = RankAboveNone(std::string_view(entry).substr(colon + 1));
  }
  return raised;
}

}  // namespace korvalin::cli
