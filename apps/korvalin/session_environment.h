#pragma once

// The systemd environment.d file that makes every GStreamer player of the user's sessions
// find our plugin and pick its sinks: the plugin folder goes on GST_PLUGIN_PATH_1_0 and our
// sinks' ranks go to MAX, keeping whatever the session already sets.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvalin::cli {

inline constexpr std::string_view kGstPluginFileName = "libgstkorvalin.so";

// $XDG_CONFIG_HOME/environment.d/60-korvalin.conf, XDG_CONFIG_HOME defaulting to ~/.config.
std::filesystem::path SessionEnvironmentFile();

// The folder of the plugin belonging to this tool: the build's gst-plugins beside it, else
// the GStreamer folder of the prefix it is installed in. Empty when none holds the plugin.
std::filesystem::path DefaultPluginFolder();

// The folder as an absolute path, or why it cannot go into the file.
struct PluginFolderCheck {
  std::filesystem::path folder;
  std::string error;
};
PluginFolderCheck CheckPluginFolder(const std::filesystem::path& folder);

// The file's two assignments, NAME=VALUE, which a shell reads as well.
std::vector<std::string> SessionAssignments(const std::filesystem::path& pluginFolder);

// Writes the file (folders created) through a temporary file renamed over it; an error text
// when that failed.
std::optional<std::string> WriteSessionEnvironment(const std::filesystem::path& file,
                                                   const std::filesystem::path& pluginFolder);

// Removes the file. False with an empty error when there was none.
bool RemoveSessionEnvironment(const std::filesystem::path& file, std::string* error);

// The plugin folder a written file puts on the path; empty without a file of ours.
std::filesystem::path RegisteredPluginFolder(const std::filesystem::path& file);

// One line on whether GStreamer players get our sinks: through the file (from a login on)
// and through GST_PLUGIN_FEATURE_RANK (in this session).
std::string GstreamerSinksStatus();

// Whether a GST_PLUGIN_FEATURE_RANK value leaves korvalinvideosink above rank NONE (its
// last entry for the feature wins, as in GStreamer).
bool RaisesVideoSink(std::string_view featureRank);

}  // namespace korvalin::cli
