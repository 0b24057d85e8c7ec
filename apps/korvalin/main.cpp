#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "korvalin/commands.h"

namespace korvalin::cli {

int Fail(std::string_view message) {
  std::cerr << "korvalin: " << message << '\n';
  return kExitUsage;
}

namespace {

struct Command {
  std::string_view name;
  int (*run)(Args);
  const std::string_view& usage;
};

// In the order the general usage lists them.
constexpr Command kCommands[] = {
    {"settings", RunSettingsCommand, kSettingsUsage},
    {"geometry", RunGeometryCommand, kGeometryUsage},
    {"subs", RunSubsCommand, kSubsUsage},
    {"text-image", RunTextImageCommand, kTextImageUsage},
    {"render", RunRenderCommand, kRenderUsage},
    {"play", RunPlayCommand, kPlayUsage},
    {"graph", RunGraphCommand, kGraphUsage},
    {"register", RunRegisterCommand, kRegisterUsage},
    {"unregister", RunUnregisterCommand, kUnregisterUsage},
    {"demo", RunDemoCommand, kDemoUsage},
};

std::string GeneralUsage() {
  std::string usage = "usage: korvalin COMMAND [ARGS]\n\ncommands:\n";
  for (const Command& command : kCommands) usage += command.usage;
  return usage +
         "\n"
         "Settings live in $KORVALIN_REGISTRY, else $XDG_CONFIG_HOME/korvalin/registry.reg.\n"
         "korvalin COMMAND --help prints one command's usage.\n";
}

bool AsksForHelp(Args args) {
  for (std::string_view arg : args) {
    if (arg == "--help") return true;
  }
  return !args.empty() && args[0] == "-h";
}

}  // namespace
}  // namespace korvalin::cli

int main(int argc, char** argv) {
  using namespace korvalin::cli;
  const std::vector<std::string_view> args(argv + 1, argv + argc);
  if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
    std::fputs(GeneralUsage().c_str(), args.empty() ? stderr : stdout);
    return args.empty() ? kExitUsage : kExitOk;
  }
  for (const Command& command : kCommands) {
    if (args[0] != command.name) continue;
    const Args rest = Args(args).subspan(1);
    if (!AsksForHelp(rest)) return command.run(rest);
    std::fputs(("usage:\n" + std::string(command.usage)).c_str(), stdout);
    return kExitOk;
  }
  std::fputs(GeneralUsage().c_str(), stderr);
  return Fail("unknown command '" + std::string(args[0]) + "'");
}
