// Intelligent connection: how the graph puts filters between two pins.

#include <set>
#include <vector>

#include "host/filter_graph.h"
#include "host/pin_helpers.h"

namespace korvalin::host {
namespace {

// How many filters the graph chains between two pins at most.
constexpr int kMaxChain = 4;

std::vector<AM_MEDIA_TYPE> OfferedTypes(IPin* pin) {
  std::vector<AM_MEDIA_TYPE> types;
  ComPtr<IEnumMediaTypes> enumerator;
  if (FAILED(pin->EnumMediaTypes(enumerator.ReleaseAndGetAddressOf()))) return types;
  MediaTypePtr type;
  while (enumerator->Next(1, &type, nullptr) == S_OK && type) types.push_back(*type);
  return types;
}

}  // namespace

HRESULT FilterGraph::Connect(IPin* output, IPin* input) {
  if (!output || !input) return E_POINTER;
  std::lock_guard lock(lock_);
  const HRESULT hr = ConnectDirect(output, input, nullptr);
  if (SUCCEEDED(hr) || hr == VFW_E_NOT_IN_GRAPH || hr == VFW_E_NOT_STOPPED ||
      hr == VFW_E_ALREADY_CONNECTED) {
    return hr;
  }
  return ConnectThrough(output, input, 0);
}

HRESULT FilterGraph::Render(IPin* output) {
  if (!output) return E_POINTER;
  std::lock_guard lock(lock_);
  if (!Contains(OwnerOf(output).Get())) return VFW_E_NOT_IN_GRAPH;
  if (ConnectedPin(output)) return VFW_E_ALREADY_CONNECTED;
  return ConnectThrough(output, nullptr, 0);
}

// Filters already in the graph first, in the order they were added, then registered
// filters by merit; each is kept only when the chain reaches the target through it. A
// registered filter that fails may still have put another filter into the graph (a loader
// does just that): such a newcomer is tried before the next registered filter.
HRESULT FilterGraph::ConnectThrough(IPin* output, IPin* target, int depth) {
  const HRESULT failure = target ? VFW_E_CANNOT_CONNECT : VFW_E_CANNOT_RENDER;
  if (depth >= kMaxChain) return failure;
  std::set<IBaseFilter*> tried = {OwnerOf(output).Get(), OwnerOf(target).Get()};
  std::vector<ComPtr<IBaseFilter>> failed;  // alive, so no new filter reuses a tried address
  if (SUCCEEDED(ConnectThroughGraph(output, target, depth, &tried))) return S_OK;

  for (const FactoryTemplate& entry : registry_->FiltersAccepting(OfferedTypes(output))) {
    void* raw = nullptr;
    if (FAILED(entry.create(nullptr, IID_IBaseFilter, &raw))) continue;
    ComPtr<IBaseFilter> filter;
    filter.Attach(static_cast<IBaseFilter*>(raw));
    if (FAILED(AddFilter(filter.Get(), entry.name))) continue;
    tried.insert(filter.Get());
    if (SUCCEEDED(ConnectThroughFilter(output, filter.Get(), target, depth))) return S_OK;
    RemoveFilter(filter.Get());
    failed.push_back(std::move(filter));
    if (SUCCEEDED(ConnectThroughGraph(output, target, depth, &tried))) return S_OK;
  }
  return failure;
}

HRESULT FilterGraph::ConnectThroughGraph(IPin* output, IPin* target, int depth,
                                         std::set<IBaseFilter*>* tried) {
  for (const ComPtr<IBaseFilter>& filter : Snapshot()) {
    if (!tried->insert(filter.Get()).second) continue;
    if (SUCCEEDED(ConnectThroughFilter(output, filter.Get(), target, depth))) return S_OK;
  }
  return VFW_E_CANNOT_CONNECT;
}

HRESULT FilterGraph::ConnectThroughFilter(IPin* output, IBaseFilter* filter, IPin* target,
                                          int depth) {
  for (const ComPtr<IPin>& input : PinsOf(filter, PINDIR_INPUT, true)) {
    if (FAILED(ConnectDirect(output, input.Get(), nullptr))) continue;
    if (SUCCEEDED(ContinueFrom(filter, target, depth))) return S_OK;
    output->Disconnect();
    input->Disconnect();
  }
  return VFW_E_CANNOT_CONNECT;
}

// Onward from a filter whose input was just connected: to the target, or, when rendering,
// to the end of every stream (a filter without outputs ends one).
HRESULT FilterGraph::ContinueFrom(IBaseFilter* filter, IPin* target, int depth) {
  const auto outputs = PinsOf(filter, PINDIR_OUTPUT, true);
  if (!target) {
    if (PinsOf(filter, PINDIR_OUTPUT).empty()) return S_OK;
    bool rendered = false;
    for (const ComPtr<IPin>& next : outputs) {
      rendered |= SUCCEEDED(ConnectThrough(next.Get(), nullptr, depth + 1));
    }
    return rendered ? S_OK : VFW_E_CANNOT_RENDER;
  }
  for (const ComPtr<IPin>& next : outputs) {
    if (SUCCEEDED(ConnectDirect(next.Get(), target, nullptr)) ||
        SUCCEEDED(ConnectThrough(next.Get(), target, depth + 1))) {
      return S_OK;
    }
  }
  return VFW_E_CANNOT_CONNECT;
}

}  // namespace korvalin::host
