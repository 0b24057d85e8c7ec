#pragma once

#include "host/base_pin.h"
#include "host/com_ptr.h"
#include "host/pin_interfaces.h"

namespace korvalin::host {

// An output pin that delivers samples into the connected input pin. On connection it agrees
// on an allocator: the input pin's own when it offers one, else a MemAllocator; either way
// sized by DecideBufferSize. Active commits the allocator, Inactive decommits it.
class BaseOutputPin : public BasePin {
 public:
  BaseOutputPin(BaseFilter* filter, std::u16string name);

  // The connected pin must offer IMemInputPin.
  HRESULT CheckConnect(IPin* pin) override;
  HRESULT CompleteConnect(IPin* receivePin) override;
  HRESULT BreakConnect() override;
  HRESULT Active() override;
  HRESULT Inactive() override;

  // Upstream calls that never reach an output pin.
  HRESULT EndOfStream() override { return E_UNEXPECTED; }
  HRESULT BeginFlush() override { return E_UNEXPECTED; }
  HRESULT EndFlush() override { return E_UNEXPECTED; }

  // Sets the allocator's properties for this connection; *request holds the input pin's
  // wishes (alignment 1 at least).
  virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;

  // A sample from the connection's allocator; waits for a free one unless AM_GBF_NOWAIT.
  HRESULT GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                            uint32_t flags);
  HRESULT Deliver(IMediaSample* sample);
  HRESULT DeliverEndOfStream();
  HRESULT DeliverBeginFlush();
  HRESULT DeliverEndFlush();
  HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

  IMemAllocator* Allocator() const { return allocator_.Get(); }
  IMemInputPin* ConnectedInputPin() const { return inputPin_.Get(); }

 protected:
  virtual HRESULT DecideAllocator(IMemInputPin* pin, ComPtr<IMemAllocator>* allocator);

  ComPtr<IMemAllocator> allocator_;
  ComPtr<IMemInputPin> inputPin_;

 private:
  HRESULT SizeAndNotify(IMemInputPin* pin, IMemAllocator* allocator,
                        const ALLOCATOR_PROPERTIES& wishes);
};

}  // namespace korvalin::host
