#pragma once

#include "base/dyn_string.h"
#include "host/pin_interfaces.h"

namespace korvalin {

// The file the graph's source reads, found by walking upstream from `pin` (depth first,
// through the first connected input pins) to a filter without inputs that answers
// IFileSourceFilter. Empty when there is none.
DynString FindSourceFileName(host::IPin* pin);

}  // namespace korvalin
