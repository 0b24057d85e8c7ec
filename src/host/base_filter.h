#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "host/base_pin.h"
#include "host/com_ptr.h"
#include "host/filter_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

// A filter: its pins, its state, its clock and its place in a graph. Derived filters give
// their pins through GetPinCount and GetPin; the pins are theirs to own.
class BaseFilter : public UnknownBase, public IBaseFilter {
 public:
  explicit BaseFilter(const CLSID& clsid, IUnknown* outer = nullptr);

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;

  // IMediaFilter. Pause from Stopped activates the connected pins; Stop deactivates them.
  HRESULT Stop() override;
  HRESULT Pause() override;
  HRESULT Run(REFERENCE_TIME start) override;
  HRESULT GetState(uint32_t timeoutMs, FILTER_STATE* state) override;
  HRESULT SetSyncSource(IReferenceClock* clock) override;
  HRESULT GetSyncSource(IReferenceClock** clock) override;

  // IBaseFilter
  HRESULT GetClassID(CLSID* clsid) override;
  HRESULT EnumPins(IEnumPins** pins) override;
  HRESULT FindPin(std::u16string_view id, IPin** pin) override;
  HRESULT QueryFilterInfo(FILTER_INFO* info) override;
  HRESULT JoinFilterGraph(IFilterGraph* graph, std::u16string_view name) override;

  virtual int GetPinCount() = 0;
  // The pin at index, or null; pins may be made on first use.
  virtual BasePin* GetPin(int index) = 0;

  // Raises an event on the graph; E_NOTIMPL outside a graph.
  HRESULT NotifyEvent(int32_t code, intptr_t param1, intptr_t param2);

  FILTER_STATE State() const { return state_; }
  bool IsStopped() const { return state_ == State_Stopped; }
  bool IsActive() const { return state_ != State_Stopped; }
  std::recursive_mutex& FilterLock() { return filterLock_; }
  // The graph the filter is in (no reference), or null.
  IFilterGraph* Graph() const { return graph_; }
  std::u16string FilterName() const;
  REFERENCE_TIME StreamStartTime() const { return start_; }
  IReferenceClock* Clock() const { return clock_.Get(); }

 protected:
  std::recursive_mutex filterLock_;
  std::atomic<FILTER_STATE> state_{State_Stopped};

 private:
  CLSID clsid_;
  ComPtr<IReferenceClock> clock_;
  // The name and graph are asked for by graph searches that run while other filters' locks
  // are held, so they have a lock of their own that is never held while calling out.
  mutable std::mutex infoLock_;
  std::atomic<IFilterGraph*> graph_{nullptr};
  std::u16string name_;
  REFERENCE_TIME start_ = 0;
};

}  // namespace korvalin::host
