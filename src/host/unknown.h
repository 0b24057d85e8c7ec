#pragma once

#include <atomic>
#include <cstdint>

#include "host/guid.h"
#include "host/hresult.h"

namespace korvalin::host {

// The identifiers of this pipeline's own interfaces. They are ours: the interfaces share
// their names and methods with the published ones, not their binary layout.
constexpr GUID HostIid(uint16_t number) {
  return GUID{0x4B524856, number, 0x4000, {0x80, 0x00, 0x6B, 0x6F, 0x72, 0x76, 0x6C, 0x6E}};
}

inline constexpr IID IID_IUnknown = MakeGuid("00000000-0000-0000-C000-000000000046");

// Every interface derives virtually from IUnknown, so an object implementing several of them
// has one reference count and one QueryInterface. Each interface names its identifier as
// kIid, which ComPtr::As and QueryInterface<T> use.
struct IUnknown {
  static constexpr IID kIid = IID_IUnknown;
  // S_OK with a reference added to *out, or E_NOINTERFACE with *out null; E_POINTER when
  // out is null.
  virtual HRESULT QueryInterface(const IID& iid, void** out) = 0;
  virtual uint32_t AddRef() = 0;
  virtual uint32_t Release() = 0;

 protected:
  virtual ~IUnknown() = default;
};

// Hands out `iface` through a QueryInterface out-pointer with a reference added. `iface` must
// be a pointer of the very interface asked for: the caller casts the void* back to it.
template <class Interface>
HRESULT GetInterface(Interface* iface, void** out) {
  *out = iface;
  iface->AddRef();
  return S_OK;
}

// The reference count and interface query of an object. Derived classes answer their
// interfaces in NonDelegatingQueryInterface and pass other requests to their base.
//
// An object made with an outer object is part of that object's identity (aggregation): its
// QueryInterface, AddRef and Release go to the outer object, and only the outer object's
// holder of the inner one calls the NonDelegating forms.
class UnknownBase : public virtual IUnknown {
 public:
  explicit UnknownBase(IUnknown* outer = nullptr);
  UnknownBase(const UnknownBase&) = delete;
  UnknownBase& operator=(const UnknownBase&) = delete;
  ~UnknownBase() override;

  // How many objects of this copy of the host exist now. A module links its own copy, so
  // there it counts the module's objects: the module may be unloaded only at 0.
  static uint32_t LiveObjects();

  HRESULT QueryInterface(const IID& iid, void** out) override;
  uint32_t AddRef() override;
  uint32_t Release() override;

  virtual HRESULT NonDelegatingQueryInterface(const IID& iid, void** out);
  virtual uint32_t NonDelegatingAddRef();
  // Destroys the object when the count reaches 0.
  virtual uint32_t NonDelegatingRelease();

 protected:
  // Runs when the last reference goes, while the whole object still exists: the place to
  // stop threads that call back into derived classes.
  virtual void OnLastRelease() {}
  // Lowers the count and answers the new count, destroying nothing.
  uint32_t DecrementCount() { return --count_; }

 private:
  IUnknown* outer_;
  std::atomic<uint32_t> count_{0};
};

}  // namespace korvalin::host
