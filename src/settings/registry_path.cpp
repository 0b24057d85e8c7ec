#include "settings/registry_path.h"

#include <array>
#include <cstring>
#include <utility>

namespace korvalin {

namespace {

// Tried in this order, compared byte for byte; the first whose whole name is a prefix wins.
constexpr std::array<std::pair<std::string_view, platform::RootKey>, 4> kRoots{{
    {"HKEY_CLASSES_ROOT", platform::RootKey::ClassesRoot},
    {"HKEY_CURRENT_USER", platform::RootKey::CurrentUser},
    {"HKEY_LOCAL_MACHINE", platform::RootKey::LocalMachine},
    {"HKEY_USERS", platform::RootKey::Users},
}};

// The record's fields: 1024 and 128 bytes with their terminators.
constexpr std::size_t kMaxSubKey = 1023;
constexpr std::size_t kMaxValueName = 127;

}  // namespace

RegistryPath::RegistryPath(platform::RegistryStore& store) : store_(store) {}

int RegistryPath::Parse(std::string_view fullPath) {
  // The path is a C string in the original: it ends at its first zero byte.
  fullPath = fullPath.substr(0, fullPath.find('\0'));
  for (const auto& [name, key] : kRoots) {
    if (fullPath.substr(0, name.size()) != name) continue;
    // The one character after the root name is the separator, skipped unexamined; the path
    // must go on after it.
    if (fullPath.size() <= name.size() + 1) return -1;
    const std::string_view rest = fullPath.substr(name.size() + 1);
    const auto split = rest.rfind('\\');
    const std::string_view subKey =
        split == std::string_view::npos ? std::string_view() : rest.substr(0, split);
    const std::string_view valueName =
        split == std::string_view::npos ? rest : rest.substr(split + 1);
    if (subKey.size() > kMaxSubKey || valueName.size() > kMaxValueName) return -1;
    root_ = key;
    subKey_ = subKey;
    valueName_ = valueName;
    return 0;
  }
  return -1;
}

int RegistryPath::Read(std::string_view fullPath, const uint8_t** data, uint32_t* size,
                       uint32_t* type) {
  if (Parse(fullPath) != 0) return -1;
  std::optional<platform::RegistryValue> value = store_.Query(root_, subKey_, valueName_);
  if (!value) return -1;
  lastData_ = std::move(value->data);
  if (data) *data = lastData_.data();
  if (size) *size = static_cast<uint32_t>(lastData_.size());
  if (type) *type = value->type;
  return 0;
}

int RegistryPath::Write(std::string_view fullPath, const void* data, uint32_t size, uint32_t type) {
  if (Parse(fullPath) != 0) return -1;
  platform::RegistryValue value;
  value.type = type;
  if (size > 0 && data != nullptr) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    value.data.assign(bytes, bytes + size);
  }
  return store_.Set(root_, subKey_, valueName_, std::move(value)) == 0 ? 0 : -1;
}

int RegistryPath::WriteString(std::string_view fullPath, std::string_view text) {
  // The text ends at its first zero byte, as a C string does; the terminator is stored too.
  std::string terminated(text.substr(0, text.find('\0')));
  return Write(fullPath, terminated.c_str(), static_cast<uint32_t>(terminated.size() + 1),
               platform::REG_SZ);
}

int RegistryPath::WriteInt(std::string_view fullPath, int32_t value) {
  const auto bits = static_cast<uint32_t>(value);
  const uint8_t bytes[4] = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8),
                            static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(bits >> 24)};
  return Write(fullPath, bytes, 4, platform::REG_DWORD);
}

int32_t RegistryPath::ReadInt(std::string_view fullPath, int32_t defaultValue, int32_t min,
                              int32_t max) {
  int32_t value = defaultValue;
  const uint8_t* data = nullptr;
  uint32_t size = 0;
  // The stored type is not checked; data shorter than four bytes counts as missing.
  if (Read(fullPath, &data, &size, nullptr) == 0 && size >= 4) {
    const uint32_t bits = uint32_t{data[0]} | uint32_t{data[1]} << 8 | uint32_t{data[2]} << 16 |
                          uint32_t{data[3]} << 24;
    value = static_cast<int32_t>(bits);
  }
  if (value < min || value > max) value = defaultValue;
  return value;
}

std::string RegistryPath::ReadText(std::string_view fullPath, std::string_view defaultText) {
  const uint8_t* data = nullptr;
  uint32_t size = 0;
  if (Read(fullPath, &data, &size, nullptr) != 0) return std::string(defaultText);
  // The text up to its first zero byte; data without a terminator is taken whole.
  const void* zero = size > 0 ? std::memchr(data, 0, size) : nullptr;
  const std::size_t length =
      zero ? static_cast<std::size_t>(static_cast<const uint8_t*>(zero) - data) : size;
  return std::string(reinterpret_cast<const char*>(data), length);
}

}  // namespace korvalin
