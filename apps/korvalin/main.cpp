#include <cstdio>
#include <iostream>
#include <string_view>
#include <vector>

#include "korvalin/commands.h"

namespace korvalin::cli {

int Fail(std::string_view message) {
  std::cerr << "korvalin: " << message << '\n';
  return kExitUsage;
}

namespace {

constexpr std::string_view kUsage =
    "usage: korvalin COMMAND [ARGS]\n"
    "\n"
    "commands:\n"
    "  settings show                    print every stored setting as Name=Value\n"
    "  settings set Name=Value ...      store settings\n"
    "  settings reset                   remove every stored setting\n"
    "  geometry WxH [--subtitles] [--picture-aspect X:Y]\n"
    "                                   print the output geometry for an input size\n"
    "  subs dump FILE [--lang NAME] [--fps F]\n"
    "  subs find VIDEO [--path SEARCHPATH]\n"
    "  subs at FILE TIME_MS ...\n"
    "  subs picture FILE INDEX -o OUT.png\n"
    "  text-image TEXT [--style sub|osd] [--width W] -o OUT.png\n"
    "  render INPUT -o OUTPUT [--subs FILE] [--lang NAME] [--format yuy2|rgb32|rgb565]\n"
    "         [--frames N] [--audio IN.wav --audio-out OUT.wav]\n"
    "                                   play a YUV4MPEG2 film through a player's graph\n"
    "                                   (- for stdin/stdout); rgb32 and rgb565 write PNG\n"
    "                                   frames into a folder\n"
    "  graph INPUT [--audio IN.wav] [--format yuy2|rgb32|rgb565]\n"
    "                                   the filters and connections of that graph\n"
    "  register [MODULE]                register the filter module (default: the\n"
    "                                   installed or built libkorvalin.so)\n"
    "  unregister [MODULE]              remove the module's registration\n"
    "  demo [-o DIR]                    render a built-in clip with subtitles and the\n"
    "                                   clock to DIR/demo.y4m and DIR/demo.png\n"
    "                                   (DIR: ./korvalin-demo)\n"
    "\n"
    "Settings live in $KORVALIN_REGISTRY, else $XDG_CONFIG_HOME/korvalin/registry.reg.\n";

struct Command {
  std::string_view name;
  int (*run)(Args);
};

constexpr Command kCommands[] = {
    {"settings", RunSettingsCommand},
    {"geometry", RunGeometryCommand},
    {"subs", RunSubsCommand},
    {"text-image", RunTextImageCommand},
    {"render", RunRenderCommand},
    {"demo", RunDemoCommand},
    {"graph", RunGraphCommand},
    {"register", RunRegisterCommand},
    {"unregister", RunUnregisterCommand},
};

}  // namespace
}  // namespace korvalin::cli

int main(int argc, char** argv) {
  using namespace korvalin::cli;
  std::vector<std::string_view> args(argv + 1, argv + argc);
  if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
    std::fputs(kUsage.data(), args.empty() ? stderr : stdout);
    return args.empty() ? kExitUsage : kExitOk;
  }
  for (const Command& command : kCommands) {
    if (args[0] == command.name) return command.run(Args(args).subspan(1));
  }
  std::fputs(kUsage.data(), stderr);
  return Fail("unknown command '" + std::string(args[0]) + "'");
}
