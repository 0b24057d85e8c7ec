#include "host/registry_values.h"

#include <algorithm>

namespace korvalin::host {

platform::RegistryValue TextValue(std::string_view text) {
  platform::RegistryValue value{platform::REG_SZ, {text.begin(), text.end()}};
  value.data.push_back(0);
  return value;
}

platform::RegistryValue DwordValue(uint32_t number) {
  return {platform::REG_DWORD,
          {static_cast<uint8_t>(number), static_cast<uint8_t>(number >> 8),
           static_cast<uint8_t>(number >> 16), static_cast<uint8_t>(number >> 24)}};
}

bool ReadText(const std::optional<platform::RegistryValue>& value, std::string* text) {
  if (!value || value->type != platform::REG_SZ) return false;
  const auto end = std::find(value->data.begin(), value->data.end(), uint8_t{0});
  if (end == value->data.end()) return false;
  text->assign(value->data.begin(), end);
  return true;
}

bool ReadDword(const std::optional<platform::RegistryValue>& value, uint32_t* number) {
  if (!value || value->type != platform::REG_DWORD || value->data.size() != 4) return false;
  const auto& d = value->data;
  *number = uint32_t{d[0]} | uint32_t{d[1]} << 8 | uint32_t{d[2]} << 16 | uint32_t{d[3]} << 24;
  return true;
}

}  // namespace korvalin::host
