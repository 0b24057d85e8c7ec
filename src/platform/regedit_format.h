#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The registry's data model and its REGEDIT4 text form. No file I/O here: the store
// (registry_store.h) reads and writes files, this part only turns text into a model and back.
namespace korvalin::platform {

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

// One key: its root, its path below the root (empty for the root itself, no leading
// backslash) and its values in stored order. Names compare without regard to ASCII letter
// case, as the registry does, but keep the spelling they were first stored with.
struct RegistryKey {
  RootKey root = RootKey::LocalMachine;
  std::string subKey;
  std::vector<std::pair<std::string, RegistryValue>> values;

  const RegistryValue* Find(std::string_view name) const;
  // Replaces the value of that name (keeping the stored spelling) or appends it.
  void Set(std::string_view name, RegistryValue value);
  friend bool operator==(const RegistryKey&, const RegistryKey&) = default;
};

struct RegistryDocument {
  std::vector<RegistryKey> keys;  // in stored order; no two with the same root and sub-key

  RegistryKey* FindKey(RootKey root, std::string_view subKey);
  const RegistryKey* FindKey(RootKey root, std::string_view subKey) const;
  RegistryKey& CreateKey(RootKey root, std::string_view subKey);
  const RegistryValue* Find(RootKey root, std::string_view subKey, std::string_view name) const;
  // The names of a key's direct children, in stored order, each once: a child counts even
  // when only a key below it is stored (its spelling is then the first one stored).
  std::vector<std::string> SubKeyNames(RootKey root, std::string_view subKey) const;
  // Removes a key and every key below it; false when there was none. An empty sub-key
  // stands for the whole root.
  bool DeleteTree(RootKey root, std::string_view subKey);
  friend bool operator==(const RegistryDocument&, const RegistryDocument&) = default;
};

// True when a key path or value name can be written in the REGEDIT4 form (no line feed).
bool IsStorableName(std::string_view name);

struct RegeditParse {
  RegistryDocument document;
  bool headerOk = true;          // false: the text did not start with "REGEDIT4"
  std::size_t skippedLines = 0;  // lines that could not be read and were left out
  // A file that was not empty and lost something in reading.
  bool Damaged() const { return !headerOk || skippedLines > 0; }
};

// Reads REGEDIT4 text. Never fails: without the "REGEDIT4" header the document is empty
// (an empty or blank text is simply empty, not damaged); a line that cannot be read is
// skipped and counted. Sections with the same key merge; a later value of the same name
// replaces an earlier one. CRLF line ends, a UTF-8 byte order mark, blank lines and ";"
// comments are accepted.
RegeditParse ParseRegedit(std::string_view text);

// Writes REGEDIT4 text: "REGEDIT4", a blank line, then per key a "[ROOT\sub\key]" line, its
// values and a blank line. REG_DWORD values of 4 bytes as dword:, REG_SZ values that are a
// single terminated text without line breaks as quoted text (escaping \ and "), everything
// else as hex: (REG_BINARY) or hex(N): byte lists wrapped with "\" continuations.
// ParseRegedit(SerializeRegedit(d)).document == d for any document whose names are storable.
std::string SerializeRegedit(const RegistryDocument& document);

}  // namespace korvalin::platform
