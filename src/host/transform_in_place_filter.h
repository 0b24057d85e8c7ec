#pragma once

#include "host/transform_filter.h"

namespace korvalin::host {

// A transform that changes samples where they lie (or only the declared format) and passes
// the same sample on. Its input pin hands upstream the allocator of the pin downstream, so
// the upstream filter writes straight into the downstream's buffers: when the output
// connects after the input, the input is reconnected to pick that allocator up. When the
// two connections still use different allocators, each sample is first copied.
class TransformInPlaceFilter : public TransformFilter {
 public:
  using TransformFilter::Transform;
  using TransformFilter::TransformFilter;

  BasePin* GetPin(int index) override;

  // Changes the sample in place. S_OK passes it on, S_FALSE drops it.
  virtual HRESULT Transform(IMediaSample* /*sample*/) { return S_OK; }

  // The output type equals the input type.
  HRESULT CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out) override;
  // Offers the input's type, once.
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override;
  // The input connection's allocator properties, or one buffer of the output sample size.
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
  HRESULT Receive(IMediaSample* sample) override;
  // Derived filters call this when they override it.
  HRESULT CompleteConnect(PIN_DIRECTION direction, IPin* pin) override;

 private:
  // A copy of `sample` in a buffer of the output allocator.
  HRESULT CopySample(IMediaSample* sample, ComPtr<IMediaSample>* copy);
};

}  // namespace korvalin::host
