// korvalin register / unregister: run a module's registration entry points, as a
// registration tool does, and show what the store then holds.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "host/class_registration.h"
#include "host/module_loader.h"
#include "host/wide_text.h"
#include "korvalin/commands.h"
#include "module/stored_classes.h"
#include "platform/registry_store.h"

namespace korvalin::cli {

const std::string_view kRegisterUsage =
    "  register [MODULE]                register the filter module (default: the\n"
    "                                   installed or built libkorvalin.so)\n";
const std::string_view kUnregisterUsage =
    "  unregister [MODULE]              remove the module's registration\n";

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

}  // namespace

int RunRegisterCommand(Args args) { return RunEntry(args, "DllRegisterServer", "registered"); }

int RunUnregisterCommand(Args args) {
  return RunEntry(args, "DllUnregisterServer", "unregistered");
}

}  // namespace korvalin::cli
