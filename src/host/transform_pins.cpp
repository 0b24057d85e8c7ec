#include "host/transform_pins.h"

#include "host/transform_filter.h"

namespace korvalin::host {

TransformInputPin::TransformInputPin(TransformFilter* filter, std::u16string name)
    : BaseInputPin(filter, std::move(name)), transform_(filter) {}

HRESULT TransformInputPin::QueryId(std::u16string* id) {
  if (!id) return E_POINTER;
  *id = u"In";
  return S_OK;
}

HRESULT TransformInputPin::CheckMediaType(const AM_MEDIA_TYPE& type) {
  HRESULT hr = transform_->CheckInputType(type);
  if (hr != S_OK) return hr;
  TransformOutputPin* output = transform_->OutputPin();
  if (output->IsConnected()) hr = transform_->CheckTransform(type, output->CurrentMediaType());
  return hr;
}

HRESULT TransformInputPin::SetMediaType(const AM_MEDIA_TYPE& type) {
  const HRESULT hr = BaseInputPin::SetMediaType(type);
  return FAILED(hr) ? hr : transform_->SetMediaType(PINDIR_INPUT, type);
}

HRESULT TransformInputPin::CheckConnect(IPin* pin) {
  const HRESULT hr = transform_->CheckConnect(PINDIR_INPUT, pin);
  return FAILED(hr) ? hr : BaseInputPin::CheckConnect(pin);
}

HRESULT TransformInputPin::CompleteConnect(IPin* receivePin) {
  const HRESULT hr = BaseInputPin::CompleteConnect(receivePin);
  return FAILED(hr) ? hr : transform_->CompleteConnect(PINDIR_INPUT, receivePin);
}

HRESULT TransformInputPin::BreakConnect() {
  transform_->BreakConnect(PINDIR_INPUT);
  return BaseInputPin::BreakConnect();
}

HRESULT TransformInputPin::Receive(IMediaSample* sample) {
  std::lock_guard streaming(transform_->StreamingLock());
  const HRESULT hr = BaseInputPin::Receive(sample);
  return hr == S_OK ? transform_->Receive(sample) : hr;
}

HRESULT TransformInputPin::EndOfStream() {
  std::lock_guard streaming(transform_->StreamingLock());
  const HRESULT hr = CheckStreaming();
  return hr == S_OK ? transform_->EndOfStream() : hr;
}

// Flushing must get through while a Receive is blocked, so it takes no streaming lock
// until the flag is up.
HRESULT TransformInputPin::BeginFlush() {
  BaseInputPin::BeginFlush();
  return transform_->BeginFlush();
}

HRESULT TransformInputPin::EndFlush() {
  std::lock_guard streaming(transform_->StreamingLock());
  BaseInputPin::EndFlush();
  return transform_->EndFlush();
}

HRESULT TransformInputPin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  std::lock_guard streaming(transform_->StreamingLock());
  BaseInputPin::NewSegment(start, stop, rate);
  return transform_->NewSegment(start, stop, rate);
}

TransformOutputPin::TransformOutputPin(TransformFilter* filter, std::u16string name)
    : BaseOutputPin(filter, std::move(name)), transform_(filter) {}

HRESULT TransformOutputPin::QueryId(std::u16string* id) {
  if (!id) return E_POINTER;
  *id = u"Out";
  return S_OK;
}

HRESULT TransformOutputPin::CheckMediaType(const AM_MEDIA_TYPE& type) {
  TransformInputPin* input = transform_->InputPin();
  if (!input->IsConnected()) return E_UNEXPECTED;
  return transform_->CheckTransform(input->CurrentMediaType(), type);
}

HRESULT TransformOutputPin::GetMediaType(int position, AM_MEDIA_TYPE* type) {
  return transform_->GetMediaType(position, type);
}

HRESULT TransformOutputPin::SetMediaType(const AM_MEDIA_TYPE& type) {
  const HRESULT hr = BaseOutputPin::SetMediaType(type);
  return FAILED(hr) ? hr : transform_->SetMediaType(PINDIR_OUTPUT, type);
}

HRESULT TransformOutputPin::CheckConnect(IPin* pin) {
  if (!transform_->InputPin()->IsConnected()) return E_UNEXPECTED;
  const HRESULT hr = transform_->CheckConnect(PINDIR_OUTPUT, pin);
  return FAILED(hr) ? hr : BaseOutputPin::CheckConnect(pin);
}

HRESULT TransformOutputPin::CompleteConnect(IPin* receivePin) {
  const HRESULT hr = BaseOutputPin::CompleteConnect(receivePin);
  return FAILED(hr) ? hr : transform_->CompleteConnect(PINDIR_OUTPUT, receivePin);
}

HRESULT TransformOutputPin::BreakConnect() {
  transform_->BreakConnect(PINDIR_OUTPUT);
  return BaseOutputPin::BreakConnect();
}

HRESULT TransformOutputPin::DecideBufferSize(IMemAllocator* allocator,
                                             ALLOCATOR_PROPERTIES* request) {
  return transform_->DecideBufferSize(allocator, request);
}

}  // namespace korvalin::host
