#include "host/output_pin.h"

#include "host/mem_allocator.h"

namespace korvalin::host {

BaseOutputPin::BaseOutputPin(BaseFilter* filter, std::u16string name)
    : BasePin(filter, std::move(name), PINDIR_OUTPUT) {}

HRESULT BaseOutputPin::CheckConnect(IPin* pin) {
  const HRESULT hr = BasePin::CheckConnect(pin);
  if (FAILED(hr)) return hr;
  inputPin_ = QueryAs<IMemInputPin>(pin);
  return inputPin_ ? S_OK : E_NOINTERFACE;
}

HRESULT BaseOutputPin::CompleteConnect(IPin* /*receivePin*/) {
  return DecideAllocator(inputPin_.Get(), &allocator_);
}

HRESULT BaseOutputPin::BreakConnect() {
  if (allocator_) {
    allocator_->Decommit();
    allocator_.Reset();
  }
  inputPin_.Reset();
  return S_OK;
}

HRESULT BaseOutputPin::DecideAllocator(IMemInputPin* pin, ComPtr<IMemAllocator>* allocator) {
  ALLOCATOR_PROPERTIES wishes;
  pin->GetAllocatorRequirements(&wishes);
  if (wishes.cbAlign < 1) wishes.cbAlign = 1;

  if (SUCCEEDED(pin->GetAllocator(allocator->ReleaseAndGetAddressOf())) &&
      SUCCEEDED(SizeAndNotify(pin, allocator->Get(), wishes))) {
    return S_OK;
  }
  *allocator = MakeCom<MemAllocator>();
  if (!*allocator) return E_OUTOFMEMORY;
  const HRESULT hr = SizeAndNotify(pin, allocator->Get(), wishes);
  if (FAILED(hr)) allocator->Reset();
  return hr;
}

HRESULT BaseOutputPin::SizeAndNotify(IMemInputPin* pin, IMemAllocator* allocator,
                                     const ALLOCATOR_PROPERTIES& wishes) {
  ALLOCATOR_PROPERTIES request = wishes;
  const HRESULT hr = DecideBufferSize(allocator, &request);
  return FAILED(hr) ? hr : pin->NotifyAllocator(allocator, false);
}

HRESULT BaseOutputPin::Active() {
  return allocator_ ? allocator_->Commit() : VFW_E_NO_ALLOCATOR;
}

HRESULT BaseOutputPin::Inactive() {
  return allocator_ ? allocator_->Decommit() : S_OK;
}

HRESULT BaseOutputPin::GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start,
                                         REFERENCE_TIME* end, uint32_t flags) {
  if (!allocator_) return VFW_E_NO_ALLOCATOR;
  return allocator_->GetBuffer(sample, start, end, flags);
}

HRESULT BaseOutputPin::Deliver(IMediaSample* sample) {
  return inputPin_ ? inputPin_->Receive(sample) : VFW_E_NOT_CONNECTED;
}

HRESULT BaseOutputPin::DeliverEndOfStream() {
  return connected_ ? connected_->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT BaseOutputPin::DeliverBeginFlush() {
  return connected_ ? connected_->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT BaseOutputPin::DeliverEndFlush() {
  return connected_ ? connected_->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT BaseOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  return connected_ ? connected_->NewSegment(start, stop, rate) : VFW_E_NOT_CONNECTED;
}

}  // namespace korvalin::host
