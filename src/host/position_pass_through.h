#pragma once

#include "host/graph_interfaces.h"
#include "host/pin_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

// IMediaPosition for a filter that knows no position of its own (a renderer, a filter in
// the middle): it asks the filter upstream of one of its input pins. The filter aggregates
// it (made with the filter as outer object, through InnerPtr) and hands it out from its
// NonDelegatingQueryInterface.
class PositionPassThrough : public UnknownBase, public IMediaPosition {
 public:
  PositionPassThrough(IUnknown* outer, IPin* inputPin);

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;

  // VFW_E_NOT_CONNECTED without an upstream filter, E_NOTIMPL when it has no position.
  HRESULT get_Duration(double* seconds) override;

 private:
  IPin* inputPin_;  // part of the same filter, so no reference
};

}  // namespace korvalin::host
