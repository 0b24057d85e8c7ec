#pragma once

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
  std::string command = "KORVALIN_REGISTRY=" + ShellQuote(registry.string()) + " " +
                        ShellQuote(KORVALIN_CLI);
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

}  // namespace korvalin::testing
