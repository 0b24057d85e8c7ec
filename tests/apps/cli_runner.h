#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace korvalin::testing {

struct CliResult {
  int status = -1;
  std::string out;
  std::string err;
};

// A private folder with its own registry file, removed afterwards.
class TempDir : public TempFolder {
 public:
  std::filesystem::path registry() const { return path() / "registry.reg"; }
  // Runs the korvalin binary against this folder's registry (defined below).
  CliResult Run(const std::vector<std::string>& args) const;
  // Runs each command line and expects the exit status and a message containing `message`.
  void ExpectFailures(const std::vector<std::vector<std::string>>& commands, int status,
                      const std::string& message) const;
};

inline std::string ShellQuote(const std::string& s) {
  std::string quoted = "'";
  for (char c : s) quoted += (c == '\'') ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

// Runs the korvalin binary with the given arguments against the registry file `registry`.
inline CliResult RunCli(const std::vector<std::string>& args,
                        const std::filesystem::path& registry) {
  const TempDir capture;
  std::string command =
      "KORVALIN_REGISTRY=" + ShellQuote(registry.string()) + " " + ShellQuote(KORVALIN_CLI);
  for (const std::string& arg : args) command += " " + ShellQuote(arg);
  command += " >" + ShellQuote((capture.path() / "out").string());
  command += " 2>" + ShellQuote((capture.path() / "err").string()) + " </dev/null";
  const int raw = std::system(command.c_str());
  CliResult result;
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  result.out = ReadFile(capture.path() / "out");
  result.err = ReadFile(capture.path() / "err");
  return result;
}

inline CliResult TempDir::Run(const std::vector<std::string>& args) const {
  return RunCli(args, registry());
}

inline void TempDir::ExpectFailures(const std::vector<std::vector<std::string>>& commands,
                                    int status, const std::string& message) const {
  for (const auto& args : commands) {
    const CliResult r = Run(args);
    std::string line;
    for (const auto& arg : args) line += arg + " ";
    EXPECT_EQ(r.status, status) << line;
    EXPECT_NE(r.err.find(message), std::string::npos) << line << "\n" << r.err;
  }
}

// Width and height from a PNG's header, or {0, 0} when the bytes are no PNG.
inline std::pair<uint32_t, uint32_t> PngSize(const std::string& bytes) {
  if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) return {0, 0};
  const auto be32 = [&](size_t at) {
    uint32_t v = 0;
    for (size_t i = 0; i < 4; ++i) v = v << 8 | static_cast<uint8_t>(bytes[at + i]);
    return v;
  };
  return {be32(16), be32(20)};
}

}  // namespace korvalin::testing
