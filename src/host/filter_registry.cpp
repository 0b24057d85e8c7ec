#include "host/filter_registry.h"

#include <algorithm>

#include "host/class_registration.h"
#include "host/media_type.h"
#include "host/module_loader.h"

namespace korvalin::host {
namespace {

bool PinTakes(const REGFILTERPINS& pin, const AM_MEDIA_TYPE& type) {
  if (pin.bOutput) return false;
  return std::any_of(pin.lpMediaType.begin(), pin.lpMediaType.end(), [&](const REGPINTYPES& t) {
    return (t.clsMajorType == GUID_NULL || t.clsMajorType == type.majortype) &&
           (t.clsMinorType == GUID_NULL || t.clsMinorType == type.subtype);
  });
}

bool Accepts(uint32_t merit, const std::vector<REGFILTERPINS>& pins,
             const std::vector<AM_MEDIA_TYPE>& types) {
  if (merit <= MERIT_DO_NOT_USE) return false;
  return std::any_of(pins.begin(), pins.end(), [&](const REGFILTERPINS& pin) {
    return std::any_of(types.begin(), types.end(),
                       [&](const AM_MEDIA_TYPE& type) { return PinTakes(pin, type); });
  });
}

// A store's filter as the graph builder uses it: created through its module.
FactoryTemplate FromModule(StoredFilter stored) {
  FactoryTemplate entry;
  entry.name = std::move(stored.data.name);
  entry.clsid = stored.data.clsid;
  entry.create = [module = std::move(stored.modulePath), clsid = entry.clsid](
                     IUnknown* outer, const IID& iid, void** out) {
    return CreateFromModule(module, clsid, outer, iid, out);
  };
  entry.isFilter = true;
  entry.merit = stored.data.merit;
  entry.pins = std::move(stored.data.pins);
  return entry;
}

}  // namespace

FilterRegistry& FilterRegistry::Process() {
  static FilterRegistry registry([] { return &platform::RegistryStore::Process(); });
  return registry;
}

void FilterRegistry::Register(FactoryTemplate entry) {
  std::lock_guard lock(lock_);
  std::erase_if(entries_, [&](const FactoryTemplate& e) { return e.clsid == entry.clsid; });
  entries_.push_back(std::move(entry));
}

HRESULT FilterRegistry::Unregister(const CLSID& clsid) {
  std::lock_guard lock(lock_);
  return std::erase_if(entries_, [&](const FactoryTemplate& e) { return e.clsid == clsid; })
             ? S_OK
             : S_FALSE;
}

bool FilterRegistry::InProcess(const CLSID& clsid) const {
  std::lock_guard lock(lock_);
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const FactoryTemplate& e) { return e.clsid == clsid; });
}

HRESULT FilterRegistry::CreateInstance(const CLSID& clsid, IUnknown* outer, const IID& iid,
                                       void** out) const {
  if (!out) return E_POINTER;
  *out = nullptr;
  FactoryTemplate::CreateFunction create;
  {
    std::lock_guard lock(lock_);
    for (const FactoryTemplate& entry : entries_) {
      if (entry.clsid == clsid) create = entry.create;
    }
  }
  if (create) return create(outer, iid, out);
  platform::RegistryStore* store = store_ ? store_() : nullptr;
  const std::string module = store ? StoredModulePath(*store, clsid) : std::string();
  return module.empty() ? REGDB_E_CLASSNOTREG : CreateFromModule(module, clsid, outer, iid, out);
}

std::vector<FactoryTemplate> FilterRegistry::FiltersAccepting(
    const std::vector<AM_MEDIA_TYPE>& types) const {
  std::vector<FactoryTemplate> found;
  {
    std::lock_guard lock(lock_);
    for (const FactoryTemplate& entry : entries_) {
      if (entry.isFilter && Accepts(entry.merit, entry.pins, types)) found.push_back(entry);
    }
  }
  if (platform::RegistryStore* store = store_ ? store_() : nullptr) {
    for (StoredFilter& filter : ReadStoredFilters(*store)) {
      if (Accepts(filter.data.merit, filter.data.pins, types) && !InProcess(filter.data.clsid))
        found.push_back(FromModule(std::move(filter)));
    }
  }
  // Stable: among equal merits the in-process filters stay ahead of the store's.
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.merit > b.merit; });
  return found;
}

HRESULT CoCreateInstance(const CLSID& clsid, IUnknown* outer, const IID& iid, void** out) {
  return FilterRegistry::Process().CreateInstance(clsid, outer, iid, out);
}

}  // namespace korvalin::host
