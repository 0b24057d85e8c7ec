#pragma once

#include <atomic>
#include <mutex>

#include "host/base_pin.h"
#include "host/com_ptr.h"
#include "host/pin_interfaces.h"

namespace korvalin::host {

// An input pin with sample transport. Receive here only checks that the filter streams;
// derived pins do the work. A type attached to a sample is not checked here: that is the
// receiving filter's business (it may adopt or drop the sample).
class BaseInputPin : public BasePin, public IMemInputPin {
 public:
  BaseInputPin(BaseFilter* filter, std::u16string name);

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;

  // IMemInputPin. GetAllocator makes a MemAllocator on first use.
  HRESULT GetAllocator(IMemAllocator** allocator) override;
  HRESULT NotifyAllocator(IMemAllocator* allocator, bool readOnly) override;
  HRESULT GetAllocatorRequirements(ALLOCATOR_PROPERTIES* props) override;
  HRESULT Receive(IMediaSample* sample) override;
  HRESULT ReceiveCanBlock() override { return S_OK; }

  HRESULT BeginFlush() override;
  HRESULT EndFlush() override;
  // Decommits the allocator, which wakes an upstream thread waiting for a buffer.
  HRESULT Inactive() override;
  HRESULT BreakConnect() override;

  // S_OK while samples may be taken: VFW_E_WRONG_STATE when stopped, S_FALSE while
  // flushing, VFW_E_RUNTIME_ERROR after a streaming error.
  HRESULT CheckStreaming();
  bool IsFlushing() const { return flushing_; }
  bool ReadOnly() const { return readOnly_; }
  // The allocator the connection uses (no reference), or null.
  IMemAllocator* Allocator() const { return allocator_.Get(); }

 protected:
  void SetRuntimeError() { runtimeError_ = true; }

  ComPtr<IMemAllocator> allocator_;

 private:
  std::atomic<bool> flushing_{false};
  std::atomic<bool> runtimeError_{false};
  bool readOnly_ = false;
};

// The input pin of a renderer: at the end of the stream, once the filter runs, it tells the
// graph (EC_COMPLETE), once per run.
class RenderedInputPin : public BaseInputPin {
 public:
  using BaseInputPin::BaseInputPin;

  HRESULT EndOfStream() override;
  HRESULT EndFlush() override;
  HRESULT Active() override;
  HRESULT Run(REFERENCE_TIME start) override;

  bool AtEndOfStream() const;

 private:
  // Under endLock_.
  void CompleteOnce();

  mutable std::mutex endLock_;
  bool atEndOfStream_ = false;
  bool completionSent_ = false;
};

}  // namespace korvalin::host
