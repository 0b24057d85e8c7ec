#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/filter_registry.h"
#include "host/guid.h"
#include "platform/registry_store.h"

namespace korvalin::host {

// The category under which the store keeps the filters the graph builder may pick.
inline constexpr CLSID CLSID_LegacyAmFilterCategory =
    MakeGuid("083863F1-70DE-11D0-BD40-00A0C911CE86");

// A filter's registration data: what the graph builder needs to know before creating it.
struct FilterData {
  CLSID clsid;
  std::u16string name;
  uint32_t merit = MERIT_DO_NOT_USE;
  std::vector<REGFILTERPINS> pins;
  friend bool operator==(const FilterData&, const FilterData&) = default;
};

FilterData FilterDataOf(const FactoryTemplate& entry);

// The store keeps a filter's data below HKEY_CLASSES_ROOT in FilterDataKey(clsid):
//   "FriendlyName" (text), "CLSID" (the identifier's registry form), "Merit" (DWORD),
//   and per pin n the key "Pins\<n>": "Name", "ConnectsToFilter", "ConnectsToPin" (text),
//   "Output", "Rendered", "Zero", "Many" (DWORD 0 or 1), and per media type m of the pin the
//   key "Pins\<n>\Types\<m>": "Major", "Minor" (identifiers, GUID_NULL for any).
std::string FilterDataKey(const CLSID& clsid);

// Replaces the filter's data in the store. 0, or -1 when the store cannot be written (inside
// a Batch: when a name cannot be stored). Without a Batch every value is a write of its own,
// so callers hold one and commit it.
int WriteFilterData(platform::RegistryStore& store, const FilterData& data);
// Removes the filter's key and everything below it; 0 or -1 as the store.
int DeleteFilterData(platform::RegistryStore& store, const CLSID& clsid);

// The data of one filter; none when it is missing or malformed.
std::optional<FilterData> ReadFilterData(platform::RegistryStore& store, const CLSID& clsid);
// Every filter of the category, in stored order. An entry whose name, identifier or merit is
// missing or malformed is left out, as is a malformed pin or media type of a kept entry.
std::vector<FilterData> ReadAllFilterData(platform::RegistryStore& store);

}  // namespace korvalin::host
