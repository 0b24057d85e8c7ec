#include "host/module_loader.h"

#include <dlfcn.h>

#include <filesystem>
#include <map>
#include <mutex>

#include "host/class_factory.h"
#include "host/com_ptr.h"

namespace korvalin::host {
namespace {

std::string LoaderError(const std::string& fallback) {
  const char* text = ::dlerror();
  return text ? std::string(text) : fallback;
}

// The handle of the module, loaded on first use and never unloaded; null with `error`.
void* LoadModule(const std::string& path, std::string* error) {
  static std::mutex lock;
  static std::map<std::string, void*> loaded;
  std::error_code ec;
  const std::string file =
      path.empty() ? path : std::filesystem::absolute(path, ec).lexically_normal().string();
  if (file.empty() || ec) {
    *error = "no module path: \"" + path + "\"";
    return nullptr;
  }
  std::lock_guard guard(lock);
  const auto found = loaded.find(file);
  if (found != loaded.end()) return found->second;
  void* handle = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    *error = LoaderError("cannot load " + file);  // not kept: it may be there next time
    return nullptr;
  }
  loaded.emplace(file, handle);
  return handle;
}

void* ExportOf(void* handle, const std::string& path, const char* name, std::string* error) {
  ::dlerror();
  void* symbol = ::dlsym(handle, name);
  if (!symbol) *error = LoaderError(path + ": no export " + name);
  return symbol;
}

}  // namespace

void* FindModuleExport(const std::string& path, const char* name, std::string* error) {
  std::string ignored;
  if (!error) error = &ignored;
  void* handle = LoadModule(path, error);
  return handle ? ExportOf(handle, path, name, error) : nullptr;
}

HRESULT RunModuleExport(const std::string& path, const char* name, std::string* error) {
  std::string ignored;
  if (!error) error = &ignored;
  void* handle = LoadModule(path, error);
  if (!handle) return CO_E_DLLNOTFOUND;
  void* symbol = ExportOf(handle, path, name, error);
  if (!symbol) return CO_E_ERRORINDLL;
  return reinterpret_cast<DllEntryFunction>(symbol)();
}

HRESULT GetModuleClassObject(const std::string& path, const CLSID& clsid, const IID& iid,
                             void** out, std::string* error) {
  if (!out) return E_POINTER;
  *out = nullptr;
  std::string ignored;
  if (!error) error = &ignored;
  void* handle = LoadModule(path, error);
  if (!handle) return CO_E_DLLNOTFOUND;
  void* symbol = ExportOf(handle, path, "DllGetClassObject", error);
  if (!symbol) return CO_E_ERRORINDLL;
  return reinterpret_cast<DllGetClassObjectFunction>(symbol)(clsid, iid, out);
}

HRESULT CreateFromModule(const std::string& path, const CLSID& clsid, IUnknown* outer,
                         const IID& iid, void** out, std::string* error) {
  if (!out) return E_POINTER;
  *out = nullptr;
  void* raw = nullptr;
  const HRESULT hr = GetModuleClassObject(path, clsid, IClassFactory::kIid, &raw, error);
  if (FAILED(hr)) return hr;
  ComPtr<IClassFactory> factory;
  factory.Attach(static_cast<IClassFactory*>(raw));
  return factory->CreateInstance(outer, iid, out);
}

}  // namespace korvalin::host
