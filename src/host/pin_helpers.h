#pragma once

#include <vector>

#include "host/com_ptr.h"
#include "host/pin_interfaces.h"

namespace korvalin::host {

// Small walks over filters and pins through their interfaces, for graph code.

// The filter's pins in its order (empty when it cannot enumerate them).
std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter);
// The filter's pins of one direction, optionally only the unconnected ones.
std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction,
                                 bool unconnectedOnly = false);
// The pin connected to `pin`, or empty.
ComPtr<IPin> ConnectedPin(IPin* pin);
// The filter owning the pin, or empty.
ComPtr<IBaseFilter> OwnerOf(IPin* pin);
// PINDIR_INPUT when the pin does not say.
PIN_DIRECTION DirectionOf(IPin* pin);

}  // namespace korvalin::host
