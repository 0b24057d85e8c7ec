#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvalin::platform {

// The registry's model, kept in a REGEDIT4 text file.
enum class RootKey { ClassesRoot, CurrentUser, LocalMachine, Users };

inline constexpr uint32_t REG_SZ = 1;
inline constexpr uint32_t REG_BINARY = 3;
inline constexpr uint32_t REG_DWORD = 4;

struct RegistryValue {
  uint32_t type = REG_BINARY;
  std::vector<uint8_t> data;
  friend bool operator==(const RegistryValue&, const RegistryValue&) = default;
};

// "HKEY_LOCAL_MACHINE" etc.
std::string_view RootKeyName(RootKey root);

// A file-backed registry. Reads never fail: a missing, unreadable or damaged file reads as
// empty. Writes go to a temporary file that is synced and renamed over the old one while an
// advisory lock is held, merging into what is on disk at that moment, so concurrent writers
// never lose each other's values and a crash never leaves half a file.
class RegistryStore {
 public:
  explicit RegistryStore(std::filesystem::path file);
  ~RegistryStore();
  RegistryStore(const RegistryStore&) = delete;
  RegistryStore& operator=(const RegistryStore&) = delete;

  // $KORVALIN_REGISTRY, else $XDG_CONFIG_HOME/korvalin/registry.reg, else
  // ~/.config/korvalin/registry.reg.
  static std::filesystem::path DefaultFile();
  // The store of this process at DefaultFile() (looked up again when the environment
  // names another file).
  static RegistryStore& Process();

  const std::filesystem::path& file() const { return file_; }

  std::optional<RegistryValue> Query(RootKey root, std::string_view subKey,
                                     std::string_view name) const;
  // Every value of a key, in stored order.
  std::vector<std::pair<std::string, RegistryValue>> Values(RootKey root,
                                                            std::string_view subKey) const;
  // Creates the key when needed and sets the value. 0, or -1 when the file cannot be written.
  int Set(RootKey root, std::string_view subKey, std::string_view name, RegistryValue value);
  // Removes every value of a key. 0, or -1 when the file cannot be written.
  int DeleteValues(RootKey root, std::string_view subKey);

  // While a Batch lives, reads come from one snapshot and writes are committed together
  // when it ends: a whole settings load or save touches the file once.
  class Batch {
   public:
    explicit Batch(RegistryStore& store);
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    int Commit();  // commits now; 0 or -1

   private:
    RegistryStore& store_;
  };

 private:
  struct State;
  std::filesystem::path file_;
  std::unique_ptr<State> state_;
};

}  // namespace korvalin::platform
