#include "host/pin_helpers.h"

namespace korvalin::host {

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter) {
  std::vector<ComPtr<IPin>> pins;
  ComPtr<IEnumPins> enumerator;
  if (!filter || FAILED(filter->EnumPins(enumerator.ReleaseAndGetAddressOf()))) return pins;
  IPin* pin = nullptr;
  while (enumerator->Next(1, &pin, nullptr) == S_OK && pin) {
    pins.emplace_back().Attach(pin);
  }
  return pins;
}

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction,
                                 bool unconnectedOnly) {
  std::vector<ComPtr<IPin>> pins;
  for (ComPtr<IPin>& pin : PinsOf(filter)) {
    if (DirectionOf(pin.Get()) != direction) continue;
    if (unconnectedOnly && ConnectedPin(pin.Get())) continue;
    pins.push_back(std::move(pin));
  }
  return pins;
}

ComPtr<IPin> ConnectedPin(IPin* pin) {
  ComPtr<IPin> other;
  if (pin) pin->ConnectedTo(other.ReleaseAndGetAddressOf());
  return other;
}

ComPtr<IBaseFilter> OwnerOf(IPin* pin) {
  PIN_INFO info;
  if (!pin || FAILED(pin->QueryPinInfo(&info))) return {};
  return info.pFilter;
}

PIN_DIRECTION DirectionOf(IPin* pin) {
  PIN_DIRECTION direction = PINDIR_INPUT;
  if (pin) pin->QueryDirection(&direction);
  return direction;
}

}  // namespace korvalin::host
