#include "filter/video_input_pin.h"

#include "filter/graph_search.h"
#include "filter/video_format_conversion.h"
#include "host/base_filter.h"
#include "host/transform_filter.h"

namespace korvalin {

using namespace host;

VideoInputPin::VideoInputPin(TransformFilter* filter, std::u16string name)
    : TransformInputPin(filter, std::move(name)) {}

HRESULT VideoInputPin::GetAllocator(IMemAllocator** allocator) {
  if (allocator == nullptr) return E_POINTER;
  std::lock_guard lock(Lock());
  if (!ownAllocator_) {
    ownAllocator_ = MakeCom<FormatChangeAllocator>();
    if (!ownAllocator_) return E_OUTOFMEMORY;
  }
  *allocator = ownAllocator_.Get();
  (*allocator)->AddRef();
  return S_OK;
}

HRESULT VideoInputPin::CheckConnect(IPin* pin) {
  if (IsFilterUpstream(pin, kFilterName)) return E_FAIL;
  return TransformInputPin::CheckConnect(pin);
}

HRESULT VideoInputPin::CompleteConnect(IPin* receivePin) {
  const HRESULT hr = TransformInputPin::CompleteConnect(receivePin);
  if (FAILED(hr)) return hr;

  AM_MEDIA_TYPE topDown = CurrentMediaType();
  if (FAILED(MakeTopDown(&topDown))) return E_FAIL;
  ComPtr<IMemAllocator> allocator;
  if (FAILED(GetAllocator(allocator.ReleaseAndGetAddressOf()))) return E_FAIL;
  static_cast<FormatChangeAllocator*>(allocator.Get())->SetPendingType(topDown);
  topDownPending = 1;

  TransformOutputPin* output = transform_->OutputPin();
  IFilterGraph* graph = Filter()->Graph();
  if (output->IsConnected() && graph != nullptr) graph->Reconnect(output);
  return hr;
}

}  // namespace korvalin
