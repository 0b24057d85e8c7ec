#pragma once

#include <string>
#include <string_view>

namespace korvalin {

// Caption markup of a UTF-8 file with its character references above ASCII ("&#8211;",
// "&#150;" as Windows writes an en dash, "&auml;" and the other Latin names the entity decoding
// knows) written as UTF-8. Decoding them later into single code-page bytes would break the
// caption's UTF-8, and the whole caption would then be drawn in the code page.
std::string ReferencesAsUtf8(std::string_view markup);

}  // namespace korvalin
