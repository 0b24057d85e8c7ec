#pragma once

#include <string_view>

#include "host/com_ptr.h"
#include "host/filter_interfaces.h"
#include "host/pin_interfaces.h"

namespace korvalin {

// The name is `wanted`, or `wanted` followed by a blank and more: the graph names a second
// instance "Name 0001".
bool NameMatches(std::u16string_view name, std::u16string_view wanted);

// Whether the filter owning `pin`, or any filter upstream of it through connected input
// pins (depth first, in pin order), is named `wanted`.
bool IsFilterUpstream(host::IPin* pin, std::u16string_view wanted);

// The first filter of the graph's enumeration named `wanted`, or empty.
host::ComPtr<host::IBaseFilter> FindNamedFilter(host::IFilterGraph* graph,
                                                std::u16string_view wanted);

}  // namespace korvalin
