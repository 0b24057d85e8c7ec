#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "host/filter_interfaces.h"
#include "host/guid.h"
#include "host/hresult.h"
#include "host/unknown.h"
#include "platform/registry_store.h"

namespace korvalin::host {

// Merits of the published scale: the graph builder tries filters of higher merit first and
// never picks one below MERIT_DO_NOT_USE + 1 by itself.
inline constexpr uint32_t MERIT_PREFERRED = 0x800000;
inline constexpr uint32_t MERIT_NORMAL = 0x600000;
inline constexpr uint32_t MERIT_UNLIKELY = 0x400000;
inline constexpr uint32_t MERIT_DO_NOT_USE = 0x200000;

// A media type a registered pin takes; GUID_NULL matches any.
struct REGPINTYPES {
  GUID clsMajorType;
  GUID clsMinorType;
  friend bool operator==(const REGPINTYPES&, const REGPINTYPES&) = default;
};

struct REGFILTERPINS {
  std::u16string strName;
  bool bRendered = false;
  bool bOutput = false;
  bool bZero = false;
  bool bMany = false;
  CLSID clsConnectsToFilter;
  std::u16string strConnectsToPin;
  std::vector<REGPINTYPES> lpMediaType;
  friend bool operator==(const REGFILTERPINS&, const REGFILTERPINS&) = default;
};

// A class the module can create, with the filter registration data when it is a filter.
struct FactoryTemplate {
  using CreateFunction = std::function<HRESULT(IUnknown* outer, const IID& iid, void** out)>;

  std::u16string name;
  CLSID clsid;
  // Makes the object (outer may be null) and hands out the interface iid.
  CreateFunction create;
  bool isFilter = false;
  uint32_t merit = MERIT_DO_NOT_USE;
  std::vector<REGFILTERPINS> pins;
};

// The classes a process can create by identifier, and the filters the graph builder may
// pick when it has to put a filter between two pins: those registered here (in-process)
// and, when the registry draws on a registry store, those registered there, made through
// their module.
class FilterRegistry {
 public:
  // Gives the store to draw on at each use (its file may change with the environment).
  using StoreSource = std::function<platform::RegistryStore*()>;

  // In-process classes only.
  FilterRegistry() = default;
  explicit FilterRegistry(StoreSource store) : store_(std::move(store)) {}
  FilterRegistry(const FilterRegistry&) = delete;
  FilterRegistry& operator=(const FilterRegistry&) = delete;

  // The registry of this process, which CoCreateInstance uses; it draws on
  // RegistryStore::Process().
  static FilterRegistry& Process();

  // Replaces an entry of the same class identifier.
  void Register(FactoryTemplate entry);
  // S_OK, or S_FALSE when the class was not registered.
  HRESULT Unregister(const CLSID& clsid);
  // An in-process class first, else a class of the store through its module;
  // REGDB_E_CLASSNOTREG for a class registered in neither.
  HRESULT CreateInstance(const CLSID& clsid, IUnknown* outer, const IID& iid, void** out) const;

  // The filters (merit above MERIT_DO_NOT_USE) with an input pin that takes one of `types`,
  // highest merit first: the in-process ones and the store's whose class is not registered
  // in-process; among equal merits the in-process ones in registration order, then the
  // store's in stored order.
  std::vector<FactoryTemplate> FiltersAccepting(const std::vector<AM_MEDIA_TYPE>& types) const;

 private:
  bool InProcess(const CLSID& clsid) const;

  mutable std::mutex lock_;
  std::vector<FactoryTemplate> entries_;
  StoreSource store_;
};

inline constexpr HRESULT REGDB_E_CLASSNOTREG = MakeHresult(0x80040154);

// Creates a registered class of this process.
HRESULT CoCreateInstance(const CLSID& clsid, IUnknown* outer, const IID& iid, void** out);

}  // namespace korvalin::host
