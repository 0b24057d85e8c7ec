// korvalin register / unregister: run a module's registration entry points, as a
// registration tool does, and show what the store then holds; with --gstreamer, write or
// remove the session environment that gives GStreamer players our sinks.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/class_registration.h"
#include "host/module_loader.h"
#include "host/wide_text.h"
#include "korvalin/commands.h"
#include "korvalin/session_environment.h"
#include "module/stored_classes.h"
#include "platform/registry_store.h"

namespace korvalin::cli {

const std::string_view kRegisterUsage =
    "  register [MODULE]                register the filter module (default: the\n"
    "                                   installed or built libkorvalin.so)\n"
    "  register --gstreamer [--plugin-dir DIR]\n"
    "                                   from the next login, GStreamer players use\n"
    "                                   Korvalin's sinks (the plugin in DIR, default:\n"
    "                                   the installed or built one); writes\n"
    "                                   $XDG_CONFIG_HOME/environment.d/60-korvalin.conf\n";
const std::string_view kUnregisterUsage =
    "  unregister [MODULE]              remove the module's registration\n"
    "  unregister --gstreamer           remove that environment.d file\n";

using namespace host;

namespace {

constexpr const char* kModuleName = "libkorvalin.so";

std::filesystem::path ToolFolder() {
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::path() : self.parent_path();
}

// The module beside the tool (a build folder), else the installed one.
std::string DefaultModule() {
  const std::filesystem::path folder = ToolFolder();
  for (const std::filesystem::path& candidate :
       {folder / kModuleName, folder / "../lib/korvalin" / kModuleName,
        folder / "../lib" / kModuleName}) {
    std::error_code error;
    if (std::filesystem::is_regular_file(candidate, error))
      return std::filesystem::weakly_canonical(candidate, error).string();
  }
  return (folder / kModuleName).string();
}

std::string Hex(HRESULT result) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
  return text;
}

void PrintStoredClasses() {
  for (const ModuleClassState& state : StoredModuleClasses(platform::RegistryStore::Process())) {
    if (!state.stored) continue;
    const StoredClass& stored = *state.stored;
    std::printf("%s \"%s\" %s", ToString(state.entry->clsid).c_str(), Narrow(stored.name).c_str(),
                stored.modulePath.c_str());
    if (stored.filter) {
      std::printf(" (filter, merit 0x%X, %zu pins)", stored.filter->merit,
                  stored.filter->pins.size());
    }
    std::printf("\n");
  }
}

int RunEntry(Args args, const char* entry, const char* done) {
  if (args.size() > 1) return Fail("only one MODULE argument is taken");
  const std::string module = args.empty() ? DefaultModule() : std::string(args[0]);
  std::string error;
  const HRESULT result = RunModuleExport(module, entry, &error);
  if (result == CO_E_DLLNOTFOUND || result == CO_E_ERRORINDLL)
    return Fail("cannot load the module " + module + ": " + error);
  if (FAILED(result)) {
    return Fail(std::string(entry) + " failed with " + Hex(result) + " (can " +
                platform::RegistryStore::DefaultFile().string() + " be written?)");
  }
  std::printf("%s %s in %s\n", done, module.c_str(),
              platform::RegistryStore::DefaultFile().string().c_str());
  PrintStoredClasses();
  return kExitOk;
}

bool AsksForGstreamer(Args args) {
  return std::find(args.begin(), args.end(), "--gstreamer") != args.end();
}

// The arguments besides --gstreamer: --plugin-dir DIR where `folder` is given.
std::optional<std::string> ParseGstreamerArguments(Args args, std::filesystem::path* folder) {
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--gstreamer") continue;
    if (args[i] != "--plugin-dir" || folder == nullptr)
      return "unexpected argument '" + std::string(args[i]) + "' after --gstreamer";
    if (i + 1 >= args.size()) return std::string("option --plugin-dir needs a value");
    *folder = std::string(args[++i]);
  }
  return {};
}

int RegisterGstreamer(Args args) {
  std::filesystem::path folder;
  if (const std::optional<std::string> error = ParseGstreamerArguments(args, &folder))
    return Fail(*error);
  if (folder.empty()) folder = DefaultPluginFolder();
  if (folder.empty()) {
    return Fail("no " + std::string(kGstPluginFileName) +
                " in the build or installation of this tool; name its folder with "
                "--plugin-dir DIR");
  }
  const PluginFolderCheck check = CheckPluginFolder(folder);
  if (!check.error.empty()) return Fail(check.error);
  const std::filesystem::path file = SessionEnvironmentFile();
  if (const std::optional<std::string> error = WriteSessionEnvironment(file, check.folder))
    return Fail(*error);
  const std::vector<std::string> assignments = SessionAssignments(check.folder);
  std::printf("wrote %s:\n", file.c_str());
  for (const std::string& assignment : assignments) std::printf("  %s\n", assignment.c_str());
  std::printf("GStreamer players use Korvalin's sinks from the next login; to try them now:\n");
  for (const std::string& assignment : assignments) {
    const size_t equals = assignment.find('=');
    std::printf("  export %s\"%s\"\n", assignment.substr(0, equals + 1).c_str(),
                assignment.substr(equals + 1).c_str());
  }
  return kExitOk;
}

int UnregisterGstreamer(Args args) {
  if (const std::optional<std::string> error = ParseGstreamerArguments(args, nullptr))
    return Fail(*error);
  const std::filesystem::path file = SessionEnvironmentFile();
  std::string error;
  const bool removed = RemoveSessionEnvironment(file, &error);
  if (!error.empty()) return Fail(error);
  if (removed) {
    std::printf("removed %s: players lose Korvalin's sinks at the next login\n", file.c_str());
  } else {
    std::printf("%s was not there: nothing to remove\n", file.c_str());
  }
  return kExitOk;
}

}  // namespace

int RunRegisterCommand(Args args) {
  if (AsksForGstreamer(args)) return RegisterGstreamer(args);
  return RunEntry(args, "DllRegisterServer", "registered");
}

int RunUnregisterCommand(Args args) {
  if (AsksForGstreamer(args)) return UnregisterGstreamer(args);
  return RunEntry(args, "DllUnregisterServer", "unregistered");
}

}  // namespace korvalin::cli
