#include "module/stored_classes.h"

#include "module/class_table.h"

namespace korvalin {

std::vector<ModuleClassState> StoredModuleClasses(platform::RegistryStore& store) {
  platform::RegistryStore::Batch snapshot(store);  // one reading of the file for all
  std::vector<ModuleClassState> states;
  for (const host::FactoryTemplate& entry : ModuleClasses())
    states.push_back({&entry, host::ReadStoredClass(store, entry.clsid)});
  return states;
}

}  // namespace korvalin
