#pragma once

#include <vector>

#include "host/filter_registry.h"

namespace korvalin {

// The module's class-factory table, in its published order: the video filter, the four
// property pages, the loader filter. No entry has an initialisation routine.
const std::vector<host::FactoryTemplate>& ModuleClasses();

// Puts the table into FilterRegistry::Process(), for a process that links the module's
// code instead of loading the registered module.
void RegisterModuleClassesInProcess();

}  // namespace korvalin
