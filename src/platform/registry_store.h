#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/regedit_format.h"  // RootKey, RegistryValue, REG_* and the text form

namespace korvalin::platform {

// A file-backed registry in the REGEDIT4 text form.
//
// Reads never fail: a missing, unreadable or damaged file reads as empty, a damaged line is
// skipped. Without a Batch every read looks at the file afresh.
//
// Writes lock "<file>.lock" (flock; the file itself is replaced, so it cannot carry the
// lock), read the file again, apply this writer's changes to what is there (so two writers
// never lose each other's values), write "<file>.tmpXXXXXX" in the same folder, fsync it,
// rename it over the file and fsync the folder. Missing parent folders are created. When the
// file on disk was damaged it is first copied to "<file>.bak", so nothing is lost silently;
// a file over 64 MB (read as empty) is moved to "<file>.bak" whole. A file that exists but
// cannot be read is never replaced (the write fails). Temporary files of writers that were
// killed before their rename are removed by the next write.
//
// All operations are thread-safe.
class RegistryStore {
 public:
  explicit RegistryStore(std::filesystem::path file);
  ~RegistryStore();
  RegistryStore(const RegistryStore&) = delete;
  RegistryStore& operator=(const RegistryStore&) = delete;

  // $KORVALIN_REGISTRY when set and non-empty, else $XDG_CONFIG_HOME/korvalin/registry.reg
  // (when absolute), else $HOME/.config/korvalin/registry.reg.
  static std::filesystem::path DefaultFile();
  // The store of this process at DefaultFile(), looked up again on every call: when the
  // environment names another file, another store (kept for the life of the process).
  static RegistryStore& Process();

  const std::filesystem::path& file() const { return file_; }

  std::optional<RegistryValue> Query(RootKey root, std::string_view subKey,
                                     std::string_view name) const;
  // Every value of a key, in stored order.
  std::vector<std::pair<std::string, RegistryValue>> Values(RootKey root,
                                                            std::string_view subKey) const;
  // The names of a key's direct child keys, in stored order (see
  // RegistryDocument::SubKeyNames).
  std::vector<std::string> SubKeys(RootKey root, std::string_view subKey) const;
  // Creates the key when needed and sets the value. 0, or -1 when the file cannot be written
  // or a name holds a line feed. Inside a Batch the write is queued and 0 is returned unless
  // a name is unusable; the batch's commit reports the file's fate.
  int Set(RootKey root, std::string_view subKey, std::string_view name, RegistryValue value);
  // Removes every value of a key (the key stays). 0, or -1 when the file cannot be written.
  int DeleteValues(RootKey root, std::string_view subKey);
  // Removes a key with its values and every key below it. 0 (also when there was no such
  // key), or -1 when the file cannot be written or the sub-key is empty (a whole root is
  // never removed).
  int DeleteKey(RootKey root, std::string_view subKey);

  // While a Batch lives on a store, reads come from one snapshot taken when the outermost
  // batch began plus the writes made since, and writes are committed together when the
  // outermost batch ends (or at Commit()): a whole settings load or save touches the file
  // once. Batches nest. A batch belongs to the store, not to a thread: other threads using
  // the same store meanwhile share its snapshot and its commit.
  class Batch {
   public:
    explicit Batch(RegistryStore& store);
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    // Commits every pending write of the store now; 0, or -1 when the file cannot be written
    // (the pending writes are then dropped). The batch stays open with a fresh snapshot.
    int Commit();

   private:
    RegistryStore& store_;
  };

 private:
  struct State;
  std::filesystem::path file_;
  std::unique_ptr<State> state_;
};

}  // namespace korvalin::platform
