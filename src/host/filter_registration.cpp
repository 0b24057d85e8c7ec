#include "host/filter_registration.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "host/registry_values.h"
#include "host/wide_text.h"

namespace korvalin::host {
namespace {

using platform::RegistryStore;
using platform::RootKey;

constexpr RootKey kRoot = RootKey::ClassesRoot;

// The keys below `key` whose names are decimal numbers, in numeric order: pins and media
// types keep their order even when a hand edit moved their keys about.
std::vector<std::string> NumberedSubKeys(const RegistryStore& store, const std::string& key) {
  std::vector<std::pair<unsigned, std::string>> numbered;
  for (std::string& name : store.SubKeys(kRoot, key)) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error == std::errc() && end == name.data() + name.size())
      numbered.emplace_back(number, std::move(name));
  }
  std::stable_sort(numbered.begin(), numbered.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> keys;
  for (auto& [number, name] : numbered) keys.push_back(key + '\\' + name);
  return keys;
}

bool ReadGuid(const RegistryStore& store, const std::string& key, const char* name, GUID* guid) {
  std::string text;
  return ReadText(store.Query(kRoot, key, name), &text) && ParseGuid(text, guid);
}

// A flag is 0 or 1; a missing one is 0.
bool ReadFlag(const RegistryStore& store, const std::string& key, const char* name, bool* flag) {
  const auto value = store.Query(kRoot, key, name);
  uint32_t number = 0;
  if (value && (!ReadDword(value, &number) || number > 1)) return false;
  *flag = number != 0;
  return true;
}

std::optional<REGFILTERPINS> ReadPin(const RegistryStore& store, const std::string& key) {
  REGFILTERPINS pin;
  std::string name, connectsToPin;
  if (!ReadText(store.Query(kRoot, key, "Name"), &name) ||
      !ReadFlag(store, key, "Output", &pin.bOutput) ||
      !ReadFlag(store, key, "Rendered", &pin.bRendered) ||
      !ReadFlag(store, key, "Zero", &pin.bZero) || !ReadFlag(store, key, "Many", &pin.bMany)) {
    return std::nullopt;
  }
  if (store.Query(kRoot, key, "ConnectsToFilter") &&
      !ReadGuid(store, key, "ConnectsToFilter", &pin.clsConnectsToFilter)) {
    return std::nullopt;
  }
  if (store.Query(kRoot, key, "ConnectsToPin") &&
      !ReadText(store.Query(kRoot, key, "ConnectsToPin"), &connectsToPin)) {
    return std::nullopt;
  }
  pin.strName = Widen(name);
  pin.strConnectsToPin = Widen(connectsToPin);
  for (const std::string& typeKey : NumberedSubKeys(store, key + "\\Types")) {
    REGPINTYPES type;
    if (ReadGuid(store, typeKey, "Major", &type.clsMajorType) &&
        ReadGuid(store, typeKey, "Minor", &type.clsMinorType)) {
      pin.lpMediaType.push_back(type);
    }
  }
  return pin;
}

std::optional<FilterData> ReadEntry(const RegistryStore& store, const CLSID& clsid) {
  const std::string key = FilterDataKey(clsid);
  FilterData data;
  std::string name;
  if (!ReadText(store.Query(kRoot, key, "FriendlyName"), &name) ||
      !ReadGuid(store, key, "CLSID", &data.clsid) || data.clsid != clsid ||
      !ReadDword(store.Query(kRoot, key, "Merit"), &data.merit)) {
    return std::nullopt;
  }
  data.name = Widen(name);
  for (const std::string& pinKey : NumberedSubKeys(store, key + "\\Pins")) {
    if (auto pin = ReadPin(store, pinKey)) data.pins.push_back(std::move(*pin));
  }
  return data;
}

std::string CategoryKey() {
  return "CLSID\\" + ToString(CLSID_LegacyAmFilterCategory) + "\\Instance";
}

int WritePin(RegistryStore& store, const std::string& key, const REGFILTERPINS& pin) {
  int result = 0;
  const auto set = [&](const std::string& at, const char* name, platform::RegistryValue value) {
    result |= store.Set(kRoot, at, name, std::move(value));
  };
  set(key, "Name", TextValue(Narrow(pin.strName)));
  set(key, "Output", DwordValue(pin.bOutput));
  set(key, "Rendered", DwordValue(pin.bRendered));
  set(key, "Zero", DwordValue(pin.bZero));
  set(key, "Many", DwordValue(pin.bMany));
  set(key, "ConnectsToFilter", TextValue(ToString(pin.clsConnectsToFilter)));
  set(key, "ConnectsToPin", TextValue(Narrow(pin.strConnectsToPin)));
  for (std::size_t m = 0; m < pin.lpMediaType.size(); ++m) {
    const std::string typeKey = key + "\\Types\\" + std::to_string(m);
    set(typeKey, "Major", TextValue(ToString(pin.lpMediaType[m].clsMajorType)));
    set(typeKey, "Minor", TextValue(ToString(pin.lpMediaType[m].clsMinorType)));
  }
  return result;
}

}  // namespace

FilterData FilterDataOf(const FactoryTemplate& entry) {
  return FilterData{entry.clsid, entry.name, entry.merit, entry.pins};
}

std::string FilterDataKey(const CLSID& clsid) {
  return CategoryKey() + '\\' + ToString(clsid);
}

int WriteFilterData(RegistryStore& store, const FilterData& data) {
  const std::string key = FilterDataKey(data.clsid);
  int result = store.DeleteKey(kRoot, key);
  result |= store.Set(kRoot, key, "FriendlyName", TextValue(Narrow(data.name)));
  result |= store.Set(kRoot, key, "CLSID", TextValue(ToString(data.clsid)));
  result |= store.Set(kRoot, key, "Merit", DwordValue(data.merit));
  for (std::size_t n = 0; n < data.pins.size(); ++n)
    result |= WritePin(store, key + "\\Pins\\" + std::to_string(n), data.pins[n]);
  return result;
}

int DeleteFilterData(RegistryStore& store, const CLSID& clsid) {
  return store.DeleteKey(kRoot, FilterDataKey(clsid));
}

std::optional<FilterData> ReadFilterData(RegistryStore& store, const CLSID& clsid) {
  RegistryStore::Batch snapshot(store);  // one reading of the file for the whole entry
  return ReadEntry(store, clsid);
}

std::vector<FilterData> ReadAllFilterData(RegistryStore& store) {
  RegistryStore::Batch snapshot(store);
  std::vector<FilterData> filters;
  for (const std::string& name : store.SubKeys(kRoot, CategoryKey())) {
    CLSID clsid;
    if (!ParseGuid(name, &clsid)) continue;
    if (auto data = ReadEntry(store, clsid)) filters.push_back(std::move(*data));
  }
  return filters;
}

}  // namespace korvalin::host
