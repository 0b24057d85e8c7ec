#include "subtitles/language_name.h"

#include "base/string_compare.h"
#include "settings/language_table.h"

namespace korvalin {

const char* LanguageNameFromCode(const char* code) {
  if (!code) return nullptr;
  for (const LanguageEntry& entry : LanguageTable()) {
    // The table's views point at NUL-terminated literals, so data() is a C string.
    if (EqualsIgnoreCase(code, entry.code)) return entry.name.data();
  }
  return code;
}

}  // namespace korvalin
