#include "host/transform_in_place_filter.h"

#include <algorithm>
#include <cstring>

namespace korvalin::host {
namespace {

class InPlaceInputPin : public TransformInputPin {
 public:
  using TransformInputPin::TransformInputPin;

  // The downstream allocator once the output is connected.
  HRESULT GetAllocator(IMemAllocator** allocator) override {
    if (!allocator) return E_POINTER;
    IMemInputPin* downstream = transform_->OutputPin()->ConnectedInputPin();
    return downstream ? downstream->GetAllocator(allocator)
                      : TransformInputPin::GetAllocator(allocator);
  }
};

}  // namespace

BasePin* TransformInPlaceFilter::GetPin(int index) {
  std::lock_guard lock(filterLock_);
  if (!input_) input_ = std::make_unique<InPlaceInputPin>(this, u"XForm In");
  return TransformFilter::GetPin(index);
}

HRESULT TransformInPlaceFilter::CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out) {
  return MediaTypesEqual(in, out) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT TransformInPlaceFilter::GetMediaType(int position, AM_MEDIA_TYPE* type) {
  TransformInputPin* input = InputPin();
  if (!input->IsConnected()) return E_UNEXPECTED;
  if (position < 0) return E_INVALIDARG;
  if (position > 0) return VFW_S_NO_MORE_ITEMS;
  return CopyMediaType(type, input->CurrentMediaType());
}

HRESULT TransformInPlaceFilter::DecideBufferSize(IMemAllocator* allocator,
                                                 ALLOCATOR_PROPERTIES* request) {
  ALLOCATOR_PROPERTIES upstream;
  IMemAllocator* inputAllocator = InputPin()->Allocator();
  if (inputAllocator && SUCCEEDED(inputAllocator->GetProperties(&upstream)) &&
      upstream.cbBuffer > 0) {
    *request = upstream;
  } else {
    request->cBuffers = std::max(request->cBuffers, 1);
    request->cbBuffer = std::max<int32_t>(
        request->cbBuffer,
        static_cast<int32_t>(std::max<uint32_t>(OutputPin()->CurrentMediaType().lSampleSize, 1)));
  }
  ALLOCATOR_PROPERTIES actual;
  return allocator->SetProperties(request, &actual);
}

HRESULT TransformInPlaceFilter::CompleteConnect(PIN_DIRECTION direction, IPin* /*pin*/) {
  TransformInputPin* input = InputPin();
  if (direction == PINDIR_OUTPUT && input->IsConnected() &&
      input->Allocator() != OutputPin()->Allocator()) {
    if (auto graph = QueryAs<IFilterGraph2>(Graph())) {
      // The same type again; the upstream now gets the downstream's allocator from our input.
      graph->ReconnectEx(input, &input->CurrentMediaType());
    }
  }
  return S_OK;
}

HRESULT TransformInPlaceFilter::Receive(IMediaSample* sample) {
  ComPtr<IMediaSample> target(sample);
  if (InputPin()->Allocator() != OutputPin()->Allocator()) {
    const HRESULT hr = CopySample(sample, &target);
    if (FAILED(hr)) return hr;
  }
  const HRESULT hr = Transform(target.Get());
  if (hr == S_OK) return OutputPin()->Deliver(target.Get());
  return hr == S_FALSE ? S_OK : hr;
}

HRESULT TransformInPlaceFilter::CopySample(IMediaSample* sample, ComPtr<IMediaSample>* copy) {
  HRESULT hr = OutputPin()->GetDeliveryBuffer(copy->ReleaseAndGetAddressOf(), nullptr, nullptr, 0);
  if (FAILED(hr)) return hr;
  IMediaSample* out = copy->Get();
  const int32_t length = sample->GetActualDataLength();
  if (length > out->GetSize()) return VFW_E_BUFFER_OVERFLOW;
  uint8_t* from = nullptr;
  uint8_t* to = nullptr;
  sample->GetPointer(&from);
  out->GetPointer(&to);
  if (length > 0) std::memcpy(to, from, static_cast<std::size_t>(length));
  out->SetActualDataLength(length);

  REFERENCE_TIME start = 0, end = 0;
  hr = sample->GetTime(&start, &end);
  if (hr == S_OK) out->SetTime(&start, &end);
  if (hr == VFW_S_NO_STOP_TIME) out->SetTime(&start, nullptr);
  int64_t mediaStart = 0, mediaEnd = 0;
  if (sample->GetMediaTime(&mediaStart, &mediaEnd) == S_OK)
    out->SetMediaTime(&mediaStart, &mediaEnd);
  out->SetSyncPoint(sample->IsSyncPoint() == S_OK);
  out->SetPreroll(sample->IsPreroll() == S_OK);
  out->SetDiscontinuity(sample->IsDiscontinuity() == S_OK);
  MediaTypePtr type;
  if (sample->GetMediaType(&type) == S_OK) out->SetMediaType(type.get());
  return S_OK;
}

}  // namespace korvalin::host
