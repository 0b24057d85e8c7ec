#include "host/filter_graph.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <set>

#include "host/list_enumerator.h"
#include "host/pin_helpers.h"
#include "host/reference_clock.h"

namespace korvalin::host {
namespace {

std::u16string Numbered(std::u16string_view name, int number) {
  char digits[16];
  std::snprintf(digits, sizeof digits, " %04d", number);
  std::u16string result(name);
  for (const char* c = digits; *c; ++c) result.push_back(static_cast<char16_t>(*c));
  return result;
}

// A filter with a connected input and no output pins: it ends a stream and reports
// EC_COMPLETE.
bool IsRenderer(IBaseFilter* filter) {
  if (!PinsOf(filter, PINDIR_OUTPUT).empty()) return false;
  const auto inputs = PinsOf(filter, PINDIR_INPUT);
  return std::any_of(inputs.begin(), inputs.end(),
                     [](const ComPtr<IPin>& pin) { return ConnectedPin(pin.Get()) != nullptr; });
}

}  // namespace

FilterGraph::FilterGraph(const FilterRegistry* registry) : registry_(registry) {}

FilterGraph::~FilterGraph() {
  Stop();
  for (const Member& member : filters_) DisconnectAll(member.filter.Get());
  for (const Member& member : filters_) member.filter->JoinFilterGraph(nullptr, {});
  filters_.clear();
}

HRESULT FilterGraph::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (!out) return E_POINTER;
  if (iid == IID_IFilterGraph) return GetInterface(static_cast<IFilterGraph*>(this), out);
  if (iid == IID_IGraphBuilder) return GetInterface(static_cast<IGraphBuilder*>(this), out);
  if (iid == IID_IFilterGraph2) return GetInterface(static_cast<IFilterGraph2*>(this), out);
  if (iid == IID_IMediaControl) return GetInterface(static_cast<IMediaControl*>(this), out);
  if (iid == IID_IMediaFilter) return GetInterface(static_cast<IMediaFilter*>(this), out);
  if (iid == IID_IMediaEvent) return GetInterface(static_cast<IMediaEvent*>(this), out);
  if (iid == IID_IMediaEventSink) return GetInterface(static_cast<IMediaEventSink*>(this), out);
  if (iid == IID_IMediaPosition) return GetInterface(static_cast<IMediaPosition*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

bool FilterGraph::Contains(IBaseFilter* filter) const {
  return std::any_of(filters_.begin(), filters_.end(),
                     [&](const Member& m) { return m.filter.Get() == filter; });
}

bool FilterGraph::NameTaken(std::u16string_view name) const {
  return std::any_of(filters_.begin(), filters_.end(),
                     [&](const Member& m) { return m.name == name; });
}

std::u16string FilterGraph::UniqueName(std::u16string_view name) const {
  if (!NameTaken(name)) return std::u16string(name);
  for (int number = 1;; ++number) {
    std::u16string candidate = Numbered(name, number);
    if (!NameTaken(candidate)) return candidate;
  }
}

std::vector<ComPtr<IBaseFilter>> FilterGraph::Snapshot() const {
  std::vector<ComPtr<IBaseFilter>> list;
  for (const Member& member : filters_) list.push_back(member.filter);
  return list;
}

HRESULT FilterGraph::AddFilter(IBaseFilter* filter, std::u16string_view name) {
  if (!filter) return E_POINTER;
  std::lock_guard lock(lock_);
  if (Contains(filter)) return E_INVALIDARG;
  const std::u16string_view wanted = name.empty() ? u"Filter" : name;
  const std::u16string unique = UniqueName(wanted);
  const HRESULT hr = filter->JoinFilterGraph(static_cast<IFilterGraph*>(this), unique);
  if (FAILED(hr)) return hr;
  filters_.push_back({ComPtr<IBaseFilter>(filter), unique});
  if (clockChosen_) filter->SetSyncSource(clock_.Get());
  return unique == wanted ? S_OK : VFW_S_DUPLICATE_NAME;
}

void FilterGraph::DisconnectAll(IBaseFilter* filter) {
  for (const ComPtr<IPin>& pin : PinsOf(filter)) {
    if (ComPtr<IPin> other = ConnectedPin(pin.Get())) {
      other->Disconnect();
      pin->Disconnect();
    }
  }
}

HRESULT FilterGraph::RemoveFilter(IBaseFilter* filter) {
  std::lock_guard lock(lock_);
  if (!Contains(filter)) return VFW_E_NOT_FOUND;
  if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
  const ComPtr<IBaseFilter> keep(filter);  // alive until it has left
  DisconnectAll(filter);
  filter->JoinFilterGraph(nullptr, {});
  std::erase_if(filters_, [&](const Member& m) { return m.filter.Get() == filter; });
  return S_OK;
}

HRESULT FilterGraph::EnumFilters(IEnumFilters** filters) {
  std::lock_guard lock(lock_);
  return MakeEnumerator(Snapshot(), filters);
}

HRESULT FilterGraph::FindFilterByName(std::u16string_view name, IBaseFilter** filter) {
  if (!filter) return E_POINTER;
  *filter = nullptr;
  std::lock_guard lock(lock_);
  for (const Member& member : filters_) {
    if (member.name == name) return member.filter.CopyTo(filter);
  }
  return VFW_E_NOT_FOUND;
}

HRESULT FilterGraph::ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) {
  if (!output || !input) return E_POINTER;
  std::lock_guard lock(lock_);
  if (!Contains(OwnerOf(output).Get()) || !Contains(OwnerOf(input).Get())) {
    return VFW_E_NOT_IN_GRAPH;
  }
  if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
  if (DirectionOf(output) != PINDIR_OUTPUT || DirectionOf(input) != PINDIR_INPUT) {
    return VFW_E_INVALID_DIRECTION;
  }
  return WhileConnecting([&] { return output->Connect(input, type); });
}

HRESULT FilterGraph::Reconnect(IPin* pin) {
  return ReconnectEx(pin, nullptr);
}

HRESULT FilterGraph::ReconnectEx(IPin* pin, const AM_MEDIA_TYPE* type) {
  if (!pin) return E_POINTER;
  std::lock_guard lock(lock_);
  if (!ConnectedPin(pin)) return VFW_E_NOT_CONNECTED;
  if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
  // The type is copied: one taken from the connection would go with it.
  PendingReconnect reconnect{ComPtr<IPin>(pin), type != nullptr, type ? *type : AM_MEDIA_TYPE{}};
  if (connecting_ > 0) {
    pendingReconnects_.push_back(std::move(reconnect));
    return S_OK;
  }
  return WhileConnecting([&] { return ReconnectNow(reconnect); });
}

HRESULT FilterGraph::WhileConnecting(const std::function<HRESULT()>& connect) {
  ++connecting_;
  const HRESULT hr = connect();
  if (--connecting_ == 0) {
    while (!pendingReconnects_.empty()) {
      const PendingReconnect next = std::move(pendingReconnects_.front());
      pendingReconnects_.pop_front();
      WhileConnecting([&] { return ReconnectNow(next); });
    }
  }
  return hr;
}

HRESULT FilterGraph::ReconnectNow(const PendingReconnect& reconnect) {
  ComPtr<IPin> output = reconnect.pin;
  ComPtr<IPin> input = ConnectedPin(output.Get());
  if (!input) return VFW_E_NOT_CONNECTED;
  if (DirectionOf(output.Get()) == PINDIR_INPUT) std::swap(output, input);
  output->Disconnect();
  input->Disconnect();
  return output->Connect(input.Get(), reconnect.hasType ? &reconnect.type : nullptr);
}

HRESULT FilterGraph::Disconnect(IPin* pin) {
  if (!pin) return E_POINTER;
  std::lock_guard lock(lock_);
  return pin->Disconnect();
}

HRESULT FilterGraph::SetDefaultSyncSource() {
  std::lock_guard lock(lock_);
  for (const ComPtr<IBaseFilter>& filter : DownstreamFirst()) {
    if (auto clock = QueryAs<IReferenceClock>(filter.Get())) {
      return SetSyncSource(clock.Get());
    }
  }
  auto own = MakeCom<ReferenceClock>();
  if (!own) return E_OUTOFMEMORY;
  return SetSyncSource(own.Get());
}

HRESULT FilterGraph::SetSyncSource(IReferenceClock* clock) {
  std::lock_guard lock(lock_);
  clock_ = clock;
  clockChosen_ = true;
  // A filter may add filters while it takes the clock; AddFilter hands them the clock.
  for (const ComPtr<IBaseFilter>& filter : Snapshot()) filter->SetSyncSource(clock);
  return S_OK;
}

HRESULT FilterGraph::GetSyncSource(IReferenceClock** clock) {
  std::lock_guard lock(lock_);
  return clock_.CopyTo(clock);
}

std::vector<ComPtr<IBaseFilter>> FilterGraph::DownstreamFirst() const {
  std::vector<ComPtr<IBaseFilter>> remaining = Snapshot();
  std::vector<ComPtr<IBaseFilter>> order;
  std::set<IBaseFilter*> placed;
  auto allDownstreamPlaced = [&](IBaseFilter* filter) {
    for (const ComPtr<IPin>& pin : PinsOf(filter, PINDIR_OUTPUT)) {
      ComPtr<IBaseFilter> next = OwnerOf(ConnectedPin(pin.Get()).Get());
      if (next && next.Get() != filter && !placed.count(next.Get())) return false;
    }
    return true;
  };
  while (!remaining.empty()) {
    auto ready =
        std::find_if(remaining.begin(), remaining.end(),
                     [&](const ComPtr<IBaseFilter>& f) { return allDownstreamPlaced(f.Get()); });
    if (ready == remaining.end()) ready = remaining.begin();  // a cycle: take any
    placed.insert(ready->Get());
    order.push_back(*ready);
    remaining.erase(ready);
  }
  return order;
}

HRESULT FilterGraph::Pause() {
  std::lock_guard lock(lock_);
  if (state_ == State_Stopped) {
    if (!clockChosen_) SetDefaultSyncSource();
    ResetCompletion();
  }
  return ChangeState(State_Paused, [](IBaseFilter* filter) { return filter->Pause(); });
}

HRESULT FilterGraph::ChangeState(FILTER_STATE target,
                                 const std::function<HRESULT(IBaseFilter*)>& change) {
  for (const ComPtr<IBaseFilter>& filter : DownstreamFirst()) {
    const HRESULT hr = change(filter.Get());
    if (FAILED(hr)) {
      Stop();
      return hr;
    }
  }
  state_ = target;
  return S_OK;
}

HRESULT FilterGraph::Run() {
  std::lock_guard lock(lock_);
  if (state_ == State_Stopped) {
    const HRESULT hr = Pause();
    if (FAILED(hr)) return hr;
  }
  REFERENCE_TIME now = 0;
  if (clock_) clock_->GetTime(&now);
  return Run(now);
}

HRESULT FilterGraph::Run(REFERENCE_TIME start) {
  std::lock_guard lock(lock_);
  if (state_ == State_Stopped) {
    const HRESULT hr = Pause();
    if (FAILED(hr)) return hr;
  }
  return ChangeState(State_Running, [start](IBaseFilter* filter) { return filter->Run(start); });
}

HRESULT FilterGraph::Stop() {
  std::lock_guard lock(lock_);
  HRESULT result = S_OK;
  for (const ComPtr<IBaseFilter>& filter : DownstreamFirst()) {
    const HRESULT hr = filter->Stop();
    if (FAILED(hr) && SUCCEEDED(result)) result = hr;
  }
  state_ = State_Stopped;
  return result;
}

HRESULT FilterGraph::GetState(int32_t /*timeoutMs*/, int32_t* state) {
  if (!state) return E_POINTER;
  *state = state_;
  return S_OK;
}

HRESULT FilterGraph::GetState(uint32_t /*timeoutMs*/, FILTER_STATE* state) {
  if (!state) return E_POINTER;
  *state = state_;
  return S_OK;
}

void FilterGraph::ResetCompletion() {
  int renderers = 0;
  for (const Member& member : filters_) renderers += IsRenderer(member.filter.Get()) ? 1 : 0;
  std::lock_guard lock(eventLock_);
  events_.clear();
  renderersLeft_ = renderers;
  completed_ = renderers == 0;
  completionCode_ = EC_COMPLETE;
}

HRESULT FilterGraph::Notify(int32_t code, intptr_t param1, intptr_t param2) {
  std::lock_guard lock(eventLock_);
  if (code == EC_COMPLETE) {
    // One EC_COMPLETE for the graph, once the last renderer is done.
    if (completed_ || --renderersLeft_ > 0) return S_OK;
    completed_ = true;
    completionCode_ = EC_COMPLETE;
  } else if (code == EC_ERRORABORT || code == EC_USERABORT) {
    if (!completed_) completionCode_ = code;
    completed_ = true;
  }
  events_.push_back({code, param1, param2});
  eventArrived_.notify_all();
  return S_OK;
}

HRESULT FilterGraph::GetEvent(int32_t* code, intptr_t* param1, intptr_t* param2,
                              int32_t timeoutMs) {
  if (!code || !param1 || !param2) return E_POINTER;
  std::unique_lock lock(eventLock_);
  auto ready = [this] { return !events_.empty(); };
  if (timeoutMs == INFINITE) {
    eventArrived_.wait(lock, ready);
  } else if (!eventArrived_.wait_for(lock, std::chrono::milliseconds(timeoutMs), ready)) {
    return E_ABORT;
  }
  const GraphEvent event = events_.front();
  events_.pop_front();
  *code = event.code;
  *param1 = event.param1;
  *param2 = event.param2;
  return S_OK;
}

HRESULT FilterGraph::WaitForCompletion(int32_t timeoutMs, int32_t* code) {
  if (!code) return E_POINTER;
  *code = 0;
  if (state_ == State_Stopped) return VFW_E_WRONG_STATE;
  std::unique_lock lock(eventLock_);
  auto done = [this] { return completed_; };
  if (timeoutMs == INFINITE) {
    eventArrived_.wait(lock, done);
  } else if (!eventArrived_.wait_for(lock, std::chrono::milliseconds(timeoutMs), done)) {
    return E_ABORT;
  }
  *code = completionCode_;
  return S_OK;
}

HRESULT FilterGraph::get_Duration(double* seconds) {
  if (!seconds) return E_POINTER;
  std::lock_guard lock(lock_);
  HRESULT result = E_NOTIMPL;
  double longest = 0;
  for (const Member& member : filters_) {
    auto position = QueryAs<IMediaPosition>(member.filter.Get());
    double duration = 0;
    if (position && SUCCEEDED(position->get_Duration(&duration))) {
      longest = std::max(longest, duration);
      result = S_OK;
    }
  }
  *seconds = longest;
  return result;
}

}  // namespace korvalin::host
