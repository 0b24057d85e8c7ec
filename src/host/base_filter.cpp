#include "host/base_filter.h"

#include <vector>

#include "host/list_enumerator.h"

namespace korvalin::host {

BaseFilter::BaseFilter(const CLSID& clsid, IUnknown* outer) : UnknownBase(outer), clsid_(clsid) {}

HRESULT BaseFilter::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IBaseFilter) return GetInterface(static_cast<IBaseFilter*>(this), out);
  if (out && iid == IID_IMediaFilter) return GetInterface(static_cast<IMediaFilter*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

HRESULT BaseFilter::Stop() {
  std::lock_guard lock(filterLock_);
  HRESULT result = S_OK;
  if (state_ != State_Stopped) {
    for (int i = 0; i < GetPinCount(); ++i) {
      BasePin* pin = GetPin(i);
      if (pin && pin->IsConnected()) {
        const HRESULT hr = pin->Inactive();
        if (FAILED(hr) && SUCCEEDED(result)) result = hr;
      }
    }
  }
  state_ = State_Stopped;
  return result;
}

HRESULT BaseFilter::Pause() {
  std::lock_guard lock(filterLock_);
  if (state_ == State_Stopped) {
    for (int i = 0; i < GetPinCount(); ++i) {
      BasePin* pin = GetPin(i);
      if (pin && pin->IsConnected()) {
        const HRESULT hr = pin->Active();
        if (FAILED(hr)) return hr;
      }
    }
  }
  state_ = State_Paused;
  return S_OK;
}

HRESULT BaseFilter::Run(REFERENCE_TIME start) {
  std::lock_guard lock(filterLock_);
  if (state_ == State_Stopped) {
    const HRESULT hr = Pause();
    if (FAILED(hr)) return hr;
  }
  start_ = start;
  if (state_ == State_Running) return S_OK;
  // Running before the pins hear of it: a streaming thread that checks the state after this
  // point acts itself, one that checked before is caught up by the pin's Run.
  state_ = State_Running;
  for (int i = 0; i < GetPinCount(); ++i) {
    BasePin* pin = GetPin(i);
    if (pin && pin->IsConnected()) {
      const HRESULT hr = pin->Run(start);
      if (FAILED(hr)) return hr;
    }
  }
  return S_OK;
}

HRESULT BaseFilter::GetState(uint32_t /*timeoutMs*/, FILTER_STATE* state) {
  if (!state) return E_POINTER;
  *state = state_;
  return S_OK;
}

HRESULT BaseFilter::SetSyncSource(IReferenceClock* clock) {
  std::lock_guard lock(filterLock_);
  clock_ = clock;
  return S_OK;
}

HRESULT BaseFilter::GetSyncSource(IReferenceClock** clock) {
  std::lock_guard lock(filterLock_);
  return clock_.CopyTo(clock);
}

HRESULT BaseFilter::GetClassID(CLSID* clsid) {
  if (!clsid) return E_POINTER;
  *clsid = clsid_;
  return S_OK;
}

HRESULT BaseFilter::EnumPins(IEnumPins** pins) {
  std::vector<ComPtr<IPin>> list;
  {
    std::lock_guard lock(filterLock_);
    for (int i = 0; i < GetPinCount(); ++i) {
      if (BasePin* pin = GetPin(i)) list.emplace_back(static_cast<IPin*>(pin));
    }
  }
  return MakeEnumerator(std::move(list), pins);
}

HRESULT BaseFilter::FindPin(std::u16string_view id, IPin** pin) {
  if (!pin) return E_POINTER;
  *pin = nullptr;
  std::lock_guard lock(filterLock_);
  for (int i = 0; i < GetPinCount(); ++i) {
    BasePin* candidate = GetPin(i);
    std::u16string candidateId;
    if (candidate && SUCCEEDED(candidate->QueryId(&candidateId)) && candidateId == id) {
      *pin = candidate;
      candidate->AddRef();
      return S_OK;
    }
  }
  return VFW_E_NOT_FOUND;
}

HRESULT BaseFilter::QueryFilterInfo(FILTER_INFO* info) {
  if (!info) return E_POINTER;
  std::lock_guard lock(infoLock_);
  info->achName = name_;
  info->pGraph = graph_.load();
  return S_OK;
}

HRESULT BaseFilter::JoinFilterGraph(IFilterGraph* graph, std::u16string_view name) {
  std::lock_guard lock(infoLock_);
  graph_ = graph;
  name_ = graph ? std::u16string(name) : std::u16string();
  return S_OK;
}

std::u16string BaseFilter::FilterName() const {
  std::lock_guard lock(infoLock_);
  return name_;
}

HRESULT BaseFilter::NotifyEvent(int32_t code, intptr_t param1, intptr_t param2) {
  auto sink = QueryAs<IMediaEventSink>(graph_.load());
  return sink ? sink->Notify(code, param1, param2) : E_NOTIMPL;
}

}  // namespace korvalin::host
