#include "host/class_registration.h"

#include "host/registry_values.h"
#include "host/wide_text.h"

namespace korvalin::host {
namespace {

using platform::RegistryStore;
using platform::RootKey;

constexpr RootKey kRoot = RootKey::ClassesRoot;
constexpr const char* kThreadingModel = "Both";

std::string ServerKey(const CLSID& clsid) {
  return ClassKey(clsid) + "\\InprocServer32";
}

int WriteClass(RegistryStore& store, const FactoryTemplate& entry, const std::string& module) {
  int result = store.Set(kRoot, ClassKey(entry.clsid), "", TextValue(Narrow(entry.name)));
  result |= store.Set(kRoot, ServerKey(entry.clsid), "", TextValue(module));
  result |= store.Set(kRoot, ServerKey(entry.clsid), "ThreadingModel", TextValue(kThreadingModel));
  if (entry.isFilter) result |= WriteFilterData(store, FilterDataOf(entry));
  return result;
}

HRESULT ToResult(int result) {
  return result == 0 ? S_OK : E_FAIL;
}

}  // namespace

std::string ClassKey(const CLSID& clsid) {
  return "CLSID\\" + ToString(clsid);
}

HRESULT RegisterInStore(RegistryStore& store, const std::vector<FactoryTemplate>& classes,
                        const std::string& modulePath) {
  RegistryStore::Batch batch(store);
  int result = 0;
  for (const FactoryTemplate& entry : classes) result |= WriteClass(store, entry, modulePath);
  return ToResult(result | batch.Commit());
}

HRESULT UnregisterFromStore(RegistryStore& store, const std::vector<FactoryTemplate>& classes) {
  RegistryStore::Batch batch(store);
  int result = 0;
  for (const FactoryTemplate& entry : classes) {
    result |= store.DeleteKey(kRoot, ClassKey(entry.clsid));
    if (entry.isFilter) result |= DeleteFilterData(store, entry.clsid);
  }
  return ToResult(result | batch.Commit());
}

std::optional<StoredClass> ReadStoredClass(RegistryStore& store, const CLSID& clsid) {
  RegistryStore::Batch snapshot(store);
  StoredClass stored{clsid, {}, {}, {}, ReadFilterData(store, clsid)};
  std::string name;
  const bool named = ReadText(store.Query(kRoot, ClassKey(clsid), ""), &name);
  const bool served = ReadText(store.Query(kRoot, ServerKey(clsid), ""), &stored.modulePath);
  if (!named && !served) return std::nullopt;
  stored.name = Widen(name);
  ReadText(store.Query(kRoot, ServerKey(clsid), "ThreadingModel"), &stored.threadingModel);
  return stored;
}

std::string StoredModulePath(RegistryStore& store, const CLSID& clsid) {
  std::string path;
  if (!ReadText(store.Query(kRoot, ServerKey(clsid), ""), &path) || path.empty() ||
      path.front() != '/') {
    return {};
  }
  return path;
}

std::vector<StoredFilter> ReadStoredFilters(RegistryStore& store) {
  RegistryStore::Batch snapshot(store);
  std::vector<StoredFilter> filters;
  for (FilterData& data : ReadAllFilterData(store)) {
    std::string module = StoredModulePath(store, data.clsid);
    if (!module.empty()) filters.push_back({std::move(data), std::move(module)});
  }
  return filters;
}

}  // namespace korvalin::host
