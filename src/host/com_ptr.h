#pragma once

#include <memory>
#include <new>
#include <utility>

#include "host/unknown.h"

namespace korvalin::host {

// An owning reference to an interface: AddRef on copy, Release on destruction.
template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(std::nullptr_t) {}
  ComPtr(T* ptr) : ptr_(ptr) {  // implicit: a borrowed pointer is adopted with a reference
    if (ptr_) ptr_->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.ptr_) {}
  ComPtr(ComPtr&& other) noexcept : ptr_(std::exchange(other.ptr_, nullptr)) {}
  template <class U>
  ComPtr(const ComPtr<U>& other) : ComPtr(static_cast<T*>(other.Get())) {}
  ~ComPtr() { Reset(); }

  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(ptr_, other.ptr_);
    return *this;
  }

  T* Get() const { return ptr_; }
  T* operator->() const { return ptr_; }
  T& operator*() const { return *ptr_; }
  explicit operator bool() const { return ptr_ != nullptr; }

  // For out-parameters that hand over a reference (T**): drops the current one first.
  T** ReleaseAndGetAddressOf() {
    Reset();
    return &ptr_;
  }
  // Takes over a reference without adding one.
  void Attach(T* ptr) {
    Reset();
    ptr_ = ptr;
  }
  // Gives up the reference to the caller.
  T* Detach() { return std::exchange(ptr_, nullptr); }
  void Reset() {
    if (T* ptr = std::exchange(ptr_, nullptr)) ptr->Release();
  }
  // Hands out a new reference through a T** out-parameter.
  HRESULT CopyTo(T** out) const {
    if (!out) return E_POINTER;
    *out = ptr_;
    if (ptr_) ptr_->AddRef();
    return S_OK;
  }

  // QueryInterface for U::kIid.
  template <class U>
  HRESULT As(ComPtr<U>* out) const {
    if (!ptr_) return E_POINTER;
    void* raw = nullptr;
    const HRESULT hr = ptr_->QueryInterface(U::kIid, &raw);
    out->Attach(SUCCEEDED(hr) ? static_cast<U*>(raw) : nullptr);
    return hr;
  }

  friend bool operator==(const ComPtr& a, const ComPtr& b) { return a.ptr_ == b.ptr_; }
  friend bool operator==(const ComPtr& a, std::nullptr_t) { return a.ptr_ == nullptr; }

 private:
  T* ptr_ = nullptr;
};

// QueryInterface for T::kIid on any object: a ComPtr that is empty when it is not offered.
template <class T>
ComPtr<T> QueryAs(IUnknown* object) {
  ComPtr<T> result;
  void* raw = nullptr;
  if (object && SUCCEEDED(object->QueryInterface(T::kIid, &raw)))
    result.Attach(static_cast<T*>(raw));
  return result;
}

// Makes a reference-counted object; the only way they are created. Empty when memory runs
// out, which callers report as E_OUTOFMEMORY.
template <class T, class... Args>
ComPtr<T> MakeCom(Args&&... args) {
  std::unique_ptr<T> object(new (std::nothrow) T(std::forward<Args>(args)...));
  return ComPtr<T>(object.release());
}

// The owner's reference to an object aggregated into it (made with the owner as its outer
// object): counts on the inner object itself, not on the owner.
template <class T>
class InnerPtr {
 public:
  InnerPtr() = default;
  template <class... Args>
  static InnerPtr Make(IUnknown* outer, Args&&... args) {
    InnerPtr inner;
    std::unique_ptr<T> object(new (std::nothrow) T(outer, std::forward<Args>(args)...));
    inner.ptr_ = object.release();
    if (inner.ptr_) inner.ptr_->NonDelegatingAddRef();
    return inner;
  }
  InnerPtr(InnerPtr&& other) noexcept : ptr_(std::exchange(other.ptr_, nullptr)) {}
  InnerPtr& operator=(InnerPtr other) noexcept {
    std::swap(ptr_, other.ptr_);
    return *this;
  }
  ~InnerPtr() {
    if (ptr_) ptr_->NonDelegatingRelease();
  }
  T* Get() const { return ptr_; }
  T* operator->() const { return ptr_; }
  explicit operator bool() const { return ptr_ != nullptr; }

 private:
  T* ptr_ = nullptr;
};

}  // namespace korvalin::host
