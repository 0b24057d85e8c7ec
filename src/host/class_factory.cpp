#include "host/class_factory.h"

#include <atomic>
#include <utility>

namespace korvalin::host {
namespace {

std::atomic<uint32_t> serverLocks{0};

}  // namespace

ClassFactory::ClassFactory(FactoryTemplate::CreateFunction create) : create_(std::move(create)) {}

HRESULT ClassFactory::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (!out) return E_POINTER;
  if (iid == IClassFactory::kIid) return GetInterface(static_cast<IClassFactory*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

HRESULT ClassFactory::CreateInstance(IUnknown* outer, const IID& iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return create_ ? create_(outer, iid, out) : E_UNEXPECTED;
}

HRESULT ClassFactory::LockServer(bool lock) {
  if (lock) {
    ++serverLocks;
    return S_OK;
  }
  uint32_t locks = serverLocks;
  while (locks > 0 && !serverLocks.compare_exchange_weak(locks, locks - 1)) {
  }
  return S_OK;
}

uint32_t ClassFactory::ServerLocks() {
  return serverLocks;
}

}  // namespace korvalin::host
