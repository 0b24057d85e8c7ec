#include "host/filter_registry.h"

#include <algorithm>

#include "host/media_type.h"

namespace korvalin::host {
namespace {

bool PinTakes(const REGFILTERPINS& pin, const AM_MEDIA_TYPE& type) {
  if (pin.bOutput) return false;
  return std::any_of(pin.lpMediaType.begin(), pin.lpMediaType.end(), [&](const REGPINTYPES& t) {
    return (t.clsMajorType == GUID_NULL || t.clsMajorType == type.majortype) &&
           (t.clsMinorType == GUID_NULL || t.clsMinorType == type.subtype);
  });
}

}  // namespace

FilterRegistry& FilterRegistry::Process() {
  static FilterRegistry registry;
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

HRESULT FilterRegistry::CreateInstance(const CLSID& clsid, IUnknown* outer, const IID& iid,
                                       void** out) const {
  if (!out) return E_POINTER;
  *out = nullptr;
  std::function<HRESULT(IUnknown*, const IID&, void**)> create;
  {
    std::lock_guard lock(lock_);
    for (const FactoryTemplate& entry : entries_) {
      if (entry.clsid == clsid) create = entry.create;
    }
  }
  return create ? create(outer, iid, out) : REGDB_E_CLASSNOTREG;
}

std::vector<FactoryTemplate> FilterRegistry::FiltersAccepting(
    const std::vector<AM_MEDIA_TYPE>& types) const {
  std::vector<FactoryTemplate> found;
  {
    std::lock_guard lock(lock_);
    for (const FactoryTemplate& entry : entries_) {
      if (!entry.isFilter || entry.merit <= MERIT_DO_NOT_USE) continue;
      const bool takes = std::any_of(entry.pins.begin(), entry.pins.end(), [&](const auto& pin) {
        return std::any_of(types.begin(), types.end(),
                           [&](const AM_MEDIA_TYPE& type) { return PinTakes(pin, type); });
      });
      if (takes) found.push_back(entry);
    }
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.merit > b.merit; });
  return found;
}

HRESULT CoCreateInstance(const CLSID& clsid, IUnknown* outer, const IID& iid, void** out) {
  return FilterRegistry::Process().CreateInstance(clsid, outer, iid, out);
}

}  // namespace korvalin::host
