#pragma once

namespace korvalin {

// The language name for a two-letter code (letter case ignored), from the table of
// preferable languages; a code not in the table comes back unchanged, null stays null.
const char* LanguageNameFromCode(const char* code);

}  // namespace korvalin
