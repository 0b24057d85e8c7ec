#pragma once

#include "host/input_pin.h"
#include "host/output_pin.h"

namespace korvalin::host {

class TransformFilter;

// The input pin of a TransformFilter ("XForm In", id "In"): passes connection, types and
// the stream to the filter's overridables.
class TransformInputPin : public BaseInputPin {
 public:
  TransformInputPin(TransformFilter* filter, std::u16string name);

  HRESULT QueryId(std::u16string* id) override;
  // The filter's CheckInputType, and CheckTransform against a connected output.
  HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override;
  HRESULT SetMediaType(const AM_MEDIA_TYPE& type) override;
  HRESULT CheckConnect(IPin* pin) override;
  HRESULT CompleteConnect(IPin* receivePin) override;
  HRESULT BreakConnect() override;

  // Under the filter's streaming lock.
  HRESULT Receive(IMediaSample* sample) override;
  HRESULT EndOfStream() override;
  HRESULT BeginFlush() override;
  HRESULT EndFlush() override;
  HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

 protected:
  TransformFilter* transform_;
};

// The output pin of a TransformFilter ("XForm Out", id "Out"). It connects only after the
// input has: its types derive from the input's.
class TransformOutputPin : public BaseOutputPin {
 public:
  TransformOutputPin(TransformFilter* filter, std::u16string name);

  HRESULT QueryId(std::u16string* id) override;
  HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override;
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override;
  HRESULT SetMediaType(const AM_MEDIA_TYPE& type) override;
  HRESULT CheckConnect(IPin* pin) override;
  HRESULT CompleteConnect(IPin* receivePin) override;
  HRESULT BreakConnect() override;
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

 protected:
  TransformFilter* transform_;
};

}  // namespace korvalin::host
