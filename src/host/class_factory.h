#pragma once

#include <cstdint>

#include "host/filter_registry.h"
#include "host/unknown.h"

namespace korvalin::host {

inline constexpr HRESULT CLASS_E_NOAGGREGATION = MakeHresult(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = MakeHresult(0x80040111);

// Makes the objects of one class; what a module's DllGetClassObject hands out.
struct IClassFactory : virtual IUnknown {
  static constexpr IID kIid = HostIid(50);

  // `outer` is the object that aggregates the new one, or null.
  virtual HRESULT CreateInstance(IUnknown* outer, const IID& iid, void** out) = 0;
  // Locks (true) or unlocks (false) the module in memory; locks count.
  virtual HRESULT LockServer(bool lock) = 0;
};

inline constexpr IID IID_IClassFactory = IClassFactory::kIid;

// The class factory over a FactoryTemplate's create function.
class ClassFactory : public UnknownBase, public IClassFactory {
 public:
  explicit ClassFactory(FactoryTemplate::CreateFunction create);

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;
  HRESULT CreateInstance(IUnknown* outer, const IID& iid, void** out) override;
  // An unlock without a lock does nothing.
  HRESULT LockServer(bool lock) override;

  // The locks of every factory of this copy of the host not undone yet.
  static uint32_t ServerLocks();

 private:
  FactoryTemplate::CreateFunction create_;
};

}  // namespace korvalin::host
