#pragma once

#include <span>
#include <string_view>

namespace korvalin {

// The languages the user can prefer, with the two-letter codes of VobSub index files.
struct LanguageEntry {
  std::string_view name;
  std::string_view code;
};
std::span<const LanguageEntry> LanguageTable();

}  // namespace korvalin
