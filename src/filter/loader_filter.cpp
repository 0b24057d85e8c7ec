#include "filter/loader_filter.h"

#include "filter/graph_search.h"
#include "filter/video_filter.h"
#include "host/filter_registry.h"

namespace korvalin {

using namespace host;

namespace {

constexpr int32_t kLoadForce = 3;

}  // namespace

LoaderFilter::LoaderFilter() : LoaderFilter(Settings()) {}

LoaderFilter::LoaderFilter(const Settings& settings)
    : TransformInPlaceFilter(CLSID_LoaderFilter), loadMode_(settings.LoadMode) {}

HRESULT LoaderFilter::JoinFilterGraph(IFilterGraph* graph, std::u16string_view name) {
  if (graph != nullptr && loadMode_ != kLoadForce) return E_FAIL;
  return TransformInPlaceFilter::JoinFilterGraph(graph, name);
}

HRESULT LoaderFilter::CheckInputType(const AM_MEDIA_TYPE&) { return E_FAIL; }

HRESULT LoaderFilter::CheckTransform(const AM_MEDIA_TYPE&, const AM_MEDIA_TYPE&) { return S_OK; }

HRESULT LoaderFilter::GetMediaType(int, AM_MEDIA_TYPE*) { return E_UNEXPECTED; }

// Every connection fails; the first attempt on the input leaves a VideoFilter in the graph,
// which the graph builder tries next because it is already there.
HRESULT LoaderFilter::CheckConnect(PIN_DIRECTION direction, IPin*) {
  if (direction == PINDIR_OUTPUT) return E_FAIL;
  IFilterGraph* graph = Graph();
  if (graph == nullptr || FindNamedFilter(graph, u"Korvalin")) return E_FAIL;
  void* raw = nullptr;
  if (FAILED(CoCreateInstance(CLSID_VideoFilter, nullptr, IID_IBaseFilter, &raw))) return E_FAIL;
  ComPtr<IBaseFilter> filter;
  filter.Attach(static_cast<IBaseFilter*>(raw));
  graph->AddFilter(filter.Get(), u"Korvalin");
  return E_FAIL;
}

}  // namespace korvalin
