#pragma once

#include <optional>
#include <vector>

#include "host/class_registration.h"
#include "host/filter_registry.h"
#include "platform/registry_store.h"

namespace korvalin {

// One class of the module's table and what the store holds for it.
struct ModuleClassState {
  const host::FactoryTemplate* entry;       // in ModuleClasses()
  std::optional<host::StoredClass> stored;  // none: not registered
};

// Every class of the table, in table order, with its registration in `store` (for a tool
// that shows what registering did).
std::vector<ModuleClassState> StoredModuleClasses(platform::RegistryStore& store);

}  // namespace korvalin
