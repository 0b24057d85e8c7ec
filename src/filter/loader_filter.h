#pragma once

#include "host/transform_in_place_filter.h"
#include "settings/settings.h"

namespace korvalin {

inline constexpr host::CLSID CLSID_LoaderFilter =
    host::MakeGuid("8CE3343E-2289-4BAE-AE57-5106A40AF552");

// "KorvalinForce": joins a graph only in load mode "Force", and there refuses every
// connection; its one job is to put a VideoFilter named "Korvalin" into the graph on the
// first attempt, which the graph builder then finds among the filters already present.
class LoaderFilter : public host::TransformInPlaceFilter {
 public:
  // With the settings stored in the registry.
  LoaderFilter();
  explicit LoaderFilter(const Settings& settings);

  host::HRESULT JoinFilterGraph(host::IFilterGraph* graph, std::u16string_view name) override;
  host::HRESULT CheckInputType(const host::AM_MEDIA_TYPE& type) override;
  host::HRESULT CheckTransform(const host::AM_MEDIA_TYPE& in,
                               const host::AM_MEDIA_TYPE& out) override;
  host::HRESULT GetMediaType(int position, host::AM_MEDIA_TYPE* type) override;
  host::HRESULT CheckConnect(host::PIN_DIRECTION direction, host::IPin* pin) override;

 private:
  const int32_t loadMode_;
};

}  // namespace korvalin
