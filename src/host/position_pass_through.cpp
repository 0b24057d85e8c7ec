#include "host/position_pass_through.h"

#include "host/pin_helpers.h"

namespace korvalin::host {

PositionPassThrough::PositionPassThrough(IUnknown* outer, IPin* inputPin)
    : UnknownBase(outer), inputPin_(inputPin) {}

HRESULT PositionPassThrough::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IMediaPosition)
    return GetInterface(static_cast<IMediaPosition*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

HRESULT PositionPassThrough::get_Duration(double* seconds) {
  if (!seconds) return E_POINTER;
  const ComPtr<IPin> upstream = ConnectedPin(inputPin_);
  if (!upstream) return VFW_E_NOT_CONNECTED;
  const auto position = QueryAs<IMediaPosition>(OwnerOf(upstream.Get()).Get());
  return position ? position->get_Duration(seconds) : E_NOTIMPL;
}

}  // namespace korvalin::host
