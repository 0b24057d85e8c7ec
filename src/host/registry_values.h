#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/regedit_format.h"

namespace korvalin::host {

// Values of the registry store as the host writes and reads them. The readers answer false
// for a missing value or one of another type or shape, so hand-edited entries fail cleanly.
platform::RegistryValue TextValue(std::string_view text);
platform::RegistryValue DwordValue(uint32_t number);
// The text up to its terminating zero.
bool ReadText(const std::optional<platform::RegistryValue>& value, std::string* text);
bool ReadDword(const std::optional<platform::RegistryValue>& value, uint32_t* number);

}  // namespace korvalin::host
