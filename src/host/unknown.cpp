#include "host/unknown.h"

namespace korvalin::host {
namespace {

std::atomic<uint32_t> liveObjects{0};

}  // namespace

UnknownBase::UnknownBase(IUnknown* outer) : outer_(outer) {
  ++liveObjects;
}

UnknownBase::~UnknownBase() {
  --liveObjects;
}

uint32_t UnknownBase::LiveObjects() {
  return liveObjects;
}

HRESULT UnknownBase::QueryInterface(const IID& iid, void** out) {
  return outer_ ? outer_->QueryInterface(iid, out) : NonDelegatingQueryInterface(iid, out);
}

uint32_t UnknownBase::AddRef() {
  return outer_ ? outer_->AddRef() : NonDelegatingAddRef();
}

uint32_t UnknownBase::Release() {
  return outer_ ? outer_->Release() : NonDelegatingRelease();
}

HRESULT UnknownBase::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (!out) return E_POINTER;
  if (iid == IID_IUnknown) return GetInterface(static_cast<IUnknown*>(this), out);
  *out = nullptr;
  return E_NOINTERFACE;
}

uint32_t UnknownBase::NonDelegatingAddRef() {
  return ++count_;
}

uint32_t UnknownBase::NonDelegatingRelease() {
  const uint32_t count = --count_;
  if (count == 0) {
    count_ = 1;  // a reference taken and dropped in OnLastRelease must not destroy twice
    OnLastRelease();
    delete this;  // the one place objects counted by reference are destroyed
  }
  return count;
}

}  // namespace korvalin::host
