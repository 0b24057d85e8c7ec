#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/fixed_text.h"
#include "platform/registry_store.h"

namespace korvalin {

// Addresses one registry value by its full path ("HKEY_LOCAL_MACHINE\Software\...\Name")
// and reads or writes it. Reads fall back to defaults silently.
class RegistryPath {
 public:
  explicit RegistryPath(platform::RegistryStore& store = platform::RegistryStore::Process());

  // Splits a full path into root key, sub-key and value name. 0 or -1.
  int Parse(std::string_view fullPath);
  // Reads a value. On success the data stays owned by this object until the next Read.
  int Read(std::string_view fullPath, const uint8_t** data, uint32_t* size, uint32_t* type);
  // Creates or opens the sub-key and sets the value. -1 only when the path cannot be parsed
  // or the key cannot be created.
  int Write(std::string_view fullPath, const void* data, uint32_t size, uint32_t type);
  int WriteString(std::string_view fullPath, std::string_view text);
  int WriteInt(std::string_view fullPath, int32_t value);
  // The stored value, else the default; a value outside [min, max] also gives the default.
  int32_t ReadInt(std::string_view fullPath, int32_t defaultValue, int32_t min, int32_t max);
  // The stored text, else the default.
  std::string ReadText(std::string_view fullPath, std::string_view defaultText);
  template <std::size_t N>
  void ReadString(FixedText<N>& destination, std::string_view fullPath,
                  std::string_view defaultText) {
    destination = ReadText(fullPath, defaultText);
  }

  platform::RootKey root() const { return root_; }
  const std::string& subKey() const { return subKey_; }
  const std::string& valueName() const { return valueName_; }

 private:
  platform::RegistryStore& store_;
  platform::RootKey root_ = platform::RootKey::LocalMachine;
  std::string subKey_;
  std::string valueName_;
  std::vector<uint8_t> lastData_;
};

}  // namespace korvalin
