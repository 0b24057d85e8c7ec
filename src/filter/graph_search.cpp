#include "filter/graph_search.h"

#include "host/pin_helpers.h"

namespace korvalin {

using namespace host;

namespace {

bool FilterNamed(IBaseFilter* filter, std::u16string_view wanted) {
  FILTER_INFO info;
  return filter != nullptr && SUCCEEDED(filter->QueryFilterInfo(&info)) &&
         NameMatches(info.achName, wanted);
}

// Graphs are acyclic, but a bound keeps a damaged one from recursing forever.
constexpr int kMaxDepth = 256;

bool IsFilterUpstreamAt(IPin* pin, std::u16string_view wanted, int depth) {
  if (pin == nullptr || depth > kMaxDepth) return false;
  const ComPtr<IBaseFilter> filter = OwnerOf(pin);
  if (!filter) return false;
  if (FilterNamed(filter.Get(), wanted)) return true;
  for (const ComPtr<IPin>& input : PinsOf(filter.Get(), PINDIR_INPUT)) {
    const ComPtr<IPin> upstream = ConnectedPin(input.Get());
    if (upstream && IsFilterUpstreamAt(upstream.Get(), wanted, depth + 1)) return true;
  }
  return false;
}

}  // namespace

bool NameMatches(std::u16string_view name, std::u16string_view wanted) {
  if (!name.starts_with(wanted)) return false;
  return name.size() == wanted.size() || name[wanted.size()] == u' ';
}

bool IsFilterUpstream(IPin* pin, std::u16string_view wanted) {
  return IsFilterUpstreamAt(pin, wanted, 0);
}

ComPtr<IBaseFilter> FindNamedFilter(IFilterGraph* graph, std::u16string_view wanted) {
  ComPtr<IEnumFilters> filters;
  if (graph == nullptr || FAILED(graph->EnumFilters(filters.ReleaseAndGetAddressOf())) ||
      !filters) {
    return nullptr;
  }
  IBaseFilter* next = nullptr;
  uint32_t fetched = 0;
  while (filters->Next(1, &next, &fetched) == S_OK && fetched == 1) {
    ComPtr<IBaseFilter> filter;
    filter.Attach(next);
    if (FilterNamed(filter.Get(), wanted)) return filter;
  }
  return nullptr;
}

}  // namespace korvalin
