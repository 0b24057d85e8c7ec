// `register --gstreamer`, `unregister --gstreamer` and the line `graph` adds about them, run
// through the tool against a private config folder.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "cli_runner.h"

namespace korvalin::testing {
namespace {

namespace fs = std::filesystem;

class SessionEnvironmentCli : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("XDG_CONFIG_HOME", config().c_str(), 1);
    unsetenv("GST_PLUGIN_FEATURE_RANK");
    clip_ = dir_.Write("clip.y4m", "YUV4MPEG2 W16 H16 F25:1 Ip A1:1 C422\nFRAME\n" +
                                       std::string(16 * 16 * 2, '\x80'));
  }
  void TearDown() override { unsetenv("XDG_CONFIG_HOME"); }
  fs::path config() const { return dir_.path() / "config"; }
  fs::path file() const { return config() / "environment.d" / "60-korvalin.conf"; }
  // A folder holding a file of the plugin's name.
  fs::path PluginFolder(const std::string& name) const {
    return dir_.Write(name + "/libgstkorvalin.so", "").parent_path();
  }
  std::string GraphStatus() const {
    const CliResult graph = dir_.Run({"graph", clip_.string()});
    EXPECT_EQ(graph.status, 0) << graph.err;
    const size_t at = graph.out.find("GStreamer sinks: ");
    return at == std::string::npos ? "" : graph.out.substr(at, graph.out.find('\n', at) - at);
  }
  static std::string Lines(const fs::path& folder) {
    return "GST_PLUGIN_PATH_1_0=" + folder.string() +
           "${GST_PLUGIN_PATH_1_0:+:$GST_PLUGIN_PATH_1_0}\n"
           "GST_PLUGIN_FEATURE_RANK=korvalinvideosink:MAX,korvalinaudiosink:MAX"
           "${GST_PLUGIN_FEATURE_RANK:+,$GST_PLUGIN_FEATURE_RANK}\n";
  }

  TempDir dir_;
  fs::path clip_;
};

TEST_F(SessionEnvironmentCli, RegisterWritesTheFileUnregisterRemovesItAndGraphTells) {
  EXPECT_EQ(GraphStatus(), "GStreamer sinks: not registered");
  for (const char* name : {"first", "second"}) {  // the second replaces the first
    const CliResult r = dir_.Run({"register", "--gstreamer", "--plugin-dir", PluginFolder(name)});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("export GST_PLUGIN_FEATURE_RANK="), std::string::npos) << r.out;
  }
  const std::string text = ReadFile(file());
  EXPECT_TRUE(text.starts_with("# Written by `korvalin register --gstreamer`")) << text;
  EXPECT_TRUE(text.ends_with("\n" + Lines(dir_.path() / "second"))) << text;
  EXPECT_EQ(std::distance(fs::directory_iterator(file().parent_path()), {}), 1);
  EXPECT_EQ(GraphStatus(), "GStreamer sinks: active (" + file().string() + ")");

  for (const char* said : {"removed ", "nothing to remove"}) {
    const CliResult r = dir_.Run({"unregister", "--gstreamer"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find(said), std::string::npos) << r.out;
  }
  EXPECT_EQ(GraphStatus(), "GStreamer sinks: not registered");
}

TEST_F(SessionEnvironmentCli, TheDefaultsAreTheBuiltPluginAndTheHomeConfig) {
  const fs::path built = fs::path(KORVALIN_CLI).parent_path() / "gst-plugins";
  if (!fs::exists(built / "libgstkorvalin.so")) GTEST_SKIP() << "the plugin is not built";
  setenv("XDG_CONFIG_HOME", "relative", 1);  // ignored, as the XDG rules say
  const char* home = std::getenv("HOME");
  const std::string savedHome = home ? home : "/";
  setenv("HOME", dir_.path().c_str(), 1);
  const CliResult r = dir_.Run({"register", "--gstreamer"});
  setenv("HOME", savedHome.c_str(), 1);
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(ReadFile(dir_.path() / ".config/environment.d/60-korvalin.conf")
                  .ends_with(Lines(fs::canonical(built))));
}

TEST_F(SessionEnvironmentCli, UnusableArgumentsAreRefusedAndNothingIsWritten) {
  const struct {
    std::vector<std::string> args;
    std::string message;
  } cases[] = {
      {{"--plugin-dir", (dir_.path() / "none").string()}, "no folder"},
      {{"--plugin-dir", dir_.path().string()}, "holds no libgstkorvalin.so"},
      {{"--plugin-dir", PluginFolder("with space").string()}, "cannot hold"},
      {{"extra"}, "unexpected argument 'extra'"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args = {"register", "--gstreamer"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    dir_.ExpectFailures({args}, 2, c.message);
  }
  EXPECT_FALSE(fs::exists(file().parent_path()));
}

TEST_F(SessionEnvironmentCli, GraphSeesTheSinksRaisedInThisSession) {
  const struct {
    const char* ranks;
    bool active;
  } cases[] = {
      {"other:1,korvalinvideosink:primary", true},
      {"korvalinvideosink:MAX,korvalinvideosink:NONE", false},  // the last entry wins
      {"korvalinaudiosink:MAX", false},
  };
  for (const auto& c : cases) {
    setenv("GST_PLUGIN_FEATURE_RANK", c.ranks, 1);
    EXPECT_EQ(GraphStatus(), std::string("GStreamer sinks: not registered") +
                                 (c.active ? "; active in this session" : ""))
        << c.ranks;
  }
  unsetenv("GST_PLUGIN_FEATURE_RANK");
}

}  // namespace
}  // namespace korvalin::testing
