#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/filter_registration.h"
#include "host/filter_registry.h"
#include "host/hresult.h"
#include "platform/registry_store.h"

namespace korvalin::host {

// Classes registered in the store, as a registration tool leaves them below
// HKEY_CLASSES_ROOT: the key "CLSID\{clsid}" with the class name as its default value, and
// its key "InprocServer32" with the module's absolute path as default value and
// "ThreadingModel" = "Both". A filter's data goes to FilterDataKey(clsid) besides.

// What the store holds for one class.
struct StoredClass {
  CLSID clsid;
  std::u16string name;
  std::string modulePath;
  std::string threadingModel;
  std::optional<FilterData> filter;
};

// A filter of the store with the module that makes it.
struct StoredFilter {
  FilterData data;
  std::string modulePath;
};

std::string ClassKey(const CLSID& clsid);

// Registers each class with the module at `modulePath`, and the filters among them with
// their registration data, in one write. S_OK, or E_FAIL when the store cannot be written.
HRESULT RegisterInStore(platform::RegistryStore& store, const std::vector<FactoryTemplate>& classes,
                        const std::string& modulePath);
// Removes exactly what RegisterInStore wrote for these classes, in one write; keys of other
// classes stay. S_OK, or E_FAIL when the store cannot be written.
HRESULT UnregisterFromStore(platform::RegistryStore& store,
                            const std::vector<FactoryTemplate>& classes);

// The class as the store holds it; none when it has neither a name nor a module there.
std::optional<StoredClass> ReadStoredClass(platform::RegistryStore& store, const CLSID& clsid);
// The absolute path of the module registered for the class; empty when there is none.
std::string StoredModulePath(platform::RegistryStore& store, const CLSID& clsid);
// Every well-formed filter of the store whose class names a module by its absolute path, in
// stored order.
std::vector<StoredFilter> ReadStoredFilters(platform::RegistryStore& store);

}  // namespace korvalin::host
