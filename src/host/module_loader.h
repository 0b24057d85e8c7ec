#pragma once

#include <string>

#include "host/guid.h"
#include "host/hresult.h"
#include "host/unknown.h"

namespace korvalin::host {

// Modules: shared libraries exporting the class-factory entry points with C linkage. Each is
// loaded once per path (RTLD_NOW | RTLD_LOCAL) and stays loaded for the life of the process,
// so objects it made never outlive its code.

// The signature of a module's DllGetClassObject.
using DllGetClassObjectFunction = HRESULT (*)(const CLSID& clsid, const IID& iid, void** out);
// The signature of DllRegisterServer, DllUnregisterServer and DllCanUnloadNow.
using DllEntryFunction = HRESULT (*)();

inline constexpr HRESULT CO_E_DLLNOTFOUND = MakeHresult(0x800401F8);
inline constexpr HRESULT CO_E_ERRORINDLL = MakeHresult(0x800401F9);

// An export of the module at `path` (made absolute), loading the module on first use. Null
// when the module cannot be loaded or lacks the export; then `error` (when given) says why,
// in the dynamic loader's words.
void* FindModuleExport(const std::string& path, const char* name, std::string* error);

// Runs an export of the form HRESULT() and returns its result: CO_E_DLLNOTFOUND when the
// module cannot be loaded, CO_E_ERRORINDLL when it lacks the export (with `error` set).
HRESULT RunModuleExport(const std::string& path, const char* name, std::string* error);

// The module's class factory for `clsid` through its DllGetClassObject, handing out `iid`;
// the module's own result, or the loading errors above.
HRESULT GetModuleClassObject(const std::string& path, const CLSID& clsid, const IID& iid,
                             void** out, std::string* error = nullptr);

// Creates `clsid` through its module's class factory.
HRESULT CreateFromModule(const std::string& path, const CLSID& clsid, IUnknown* outer,
                         const IID& iid, void** out, std::string* error = nullptr);

}  // namespace korvalin::host
