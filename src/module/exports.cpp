// The module's entry points, the only symbols libkorvalin.so exports.

#include <dlfcn.h>

#include <filesystem>
#include <new>
#include <string>
#include <type_traits>

#include "host/class_factory.h"
#include "host/class_registration.h"
#include "host/com_ptr.h"
#include "host/module_loader.h"
#include "module/class_table.h"
#include "platform/registry_store.h"

#define KORVALIN_EXPORT extern "C" __attribute__((visibility("default")))

using korvalin::ModuleClasses;
using namespace korvalin::host;

namespace {

// Any object of this module: dladdr names the file it was loaded from.
const char kThisModule = 0;

std::string ThisModulePath() {
  Dl_info info{};
  if (::dladdr(&kThisModule, &info) == 0 || !info.dli_fname || !*info.dli_fname) return {};
  std::error_code ec;
  const std::filesystem::path path = std::filesystem::absolute(info.dli_fname, ec);
  return ec ? std::string() : path.lexically_normal().string();
}

// No exception leaves the module: its callers are C.
template <class Work>
HRESULT Guarded(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace

KORVALIN_EXPORT HRESULT DllRegisterServer() {
  return Guarded([] {
    const std::string path = ThisModulePath();
    if (path.empty()) return E_FAIL;
    return RegisterInStore(korvalin::platform::RegistryStore::Process(), ModuleClasses(), path);
  });
}

KORVALIN_EXPORT HRESULT DllUnregisterServer() {
  return Guarded([] {
    return UnregisterFromStore(korvalin::platform::RegistryStore::Process(), ModuleClasses());
  });
}

KORVALIN_EXPORT HRESULT DllGetClassObject(const CLSID& clsid, const IID& iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    for (const FactoryTemplate& entry : ModuleClasses()) {
      if (entry.clsid != clsid) continue;
      const ComPtr<ClassFactory> factory = MakeCom<ClassFactory>(entry.create);
      return factory ? factory->QueryInterface(iid, out) : E_OUTOFMEMORY;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
  });
}

KORVALIN_EXPORT HRESULT DllCanUnloadNow() {
  return UnknownBase::LiveObjects() == 0 && ClassFactory::ServerLocks() == 0 ? S_OK : S_FALSE;
}

KORVALIN_EXPORT void Configure() {
  // Opens the property pages without a player; the desktop front end fills this in.
}

// The loader calls these through its own pointer types.
static_assert(std::is_same_v<decltype(&DllGetClassObject), DllGetClassObjectFunction>);
static_assert(std::is_same_v<decltype(&DllRegisterServer), DllEntryFunction>);
