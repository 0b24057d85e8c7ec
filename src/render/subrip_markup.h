#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/text_runs.h"

namespace korvalin {

// SubRip's inline tags applied: <i>, <b>, <u>, <s> and <font ...> with their closing tags,
// in any letter case, nested or not, leave the text and become italic, bold, underline,
// strike-through and colour runs (a font tag's color attribute; its other attributes are
// dropped). Any other tag, and a tag that is not closed on its line, stays as text. A closing
// tag without an opening one is dropped; a style left open lasts to the end.
platform::StyledText ParseSubRipMarkup(std::u32string_view text);

// A font tag's colour: "#RRGGBB" or "RRGGBB" in hexadecimal, or an HTML colour name, in any
// letter case. The colour as 0x00BBGGRR (red in the low byte); nothing for anything else.
std::optional<uint32_t> ParseSubRipColour(std::u32string_view value);

}  // namespace korvalin
