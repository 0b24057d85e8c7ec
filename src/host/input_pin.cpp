#include "host/input_pin.h"

#include "host/base_filter.h"
#include "host/graph_interfaces.h"
#include "host/mem_allocator.h"

namespace korvalin::host {

BaseInputPin::BaseInputPin(BaseFilter* filter, std::u16string name)
    : BasePin(filter, std::move(name), PINDIR_INPUT) {}

HRESULT BaseInputPin::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IMemInputPin) return GetInterface(static_cast<IMemInputPin*>(this), out);
  return BasePin::NonDelegatingQueryInterface(iid, out);
}

HRESULT BaseInputPin::GetAllocator(IMemAllocator** allocator) {
  if (!allocator) return E_POINTER;
  std::lock_guard lock(Lock());
  if (!allocator_) {
    allocator_ = MakeCom<MemAllocator>();
    if (!allocator_) return E_OUTOFMEMORY;
  }
  return allocator_.CopyTo(allocator);
}

HRESULT BaseInputPin::NotifyAllocator(IMemAllocator* allocator, bool readOnly) {
  if (!allocator) return E_POINTER;
  std::lock_guard lock(Lock());
  allocator_ = allocator;
  readOnly_ = readOnly;
  return S_OK;
}

HRESULT BaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* /*props*/) {
  return E_NOTIMPL;
}

HRESULT BaseInputPin::Receive(IMediaSample* sample) {
  if (!sample) return E_POINTER;
  return CheckStreaming();
}

HRESULT BaseInputPin::CheckStreaming() {
  if (FilterStopped()) return VFW_E_WRONG_STATE;
  if (flushing_) return S_FALSE;
  if (runtimeError_) return VFW_E_RUNTIME_ERROR;
  return S_OK;
}

HRESULT BaseInputPin::BeginFlush() {
  flushing_ = true;
  return S_OK;
}

HRESULT BaseInputPin::EndFlush() {
  flushing_ = false;
  runtimeError_ = false;
  return S_OK;
}

HRESULT BaseInputPin::Inactive() {
  runtimeError_ = false;
  std::lock_guard lock(Lock());
  return allocator_ ? allocator_->Decommit() : S_OK;
}

HRESULT BaseInputPin::BreakConnect() {
  if (allocator_) {
    allocator_->Decommit();
    allocator_.Reset();
  }
  return S_OK;
}

HRESULT RenderedInputPin::EndOfStream() {
  const HRESULT hr = CheckStreaming();
  if (hr != S_OK) return hr;
  std::lock_guard lock(endLock_);
  atEndOfStream_ = true;
  if (Filter()->State() == State_Running) CompleteOnce();
  return S_OK;
}

HRESULT RenderedInputPin::EndFlush() {
  {
    std::lock_guard lock(endLock_);
    atEndOfStream_ = completionSent_ = false;
  }
  return BaseInputPin::EndFlush();
}

HRESULT RenderedInputPin::Active() {
  std::lock_guard lock(endLock_);
  atEndOfStream_ = completionSent_ = false;
  return S_OK;
}

HRESULT RenderedInputPin::Run(REFERENCE_TIME /*start*/) {
  std::lock_guard lock(endLock_);
  if (atEndOfStream_) CompleteOnce();
  return S_OK;
}

bool RenderedInputPin::AtEndOfStream() const {
  std::lock_guard lock(endLock_);
  return atEndOfStream_;
}

void RenderedInputPin::CompleteOnce() {
  if (completionSent_) return;
  completionSent_ = true;
  Filter()->NotifyEvent(EC_COMPLETE, S_OK, 0);
}

}  // namespace korvalin::host
