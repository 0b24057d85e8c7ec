#pragma once

#include <string>
#include <string_view>

namespace korvalin::host {

// Names cross the pipeline's interfaces as 16-bit text; file names on this system are bytes,
// mostly UTF-8. Valid UTF-8 becomes UTF-16; any other byte b becomes the lone surrogate
// U+DC00 + b, so that Narrow(Widen(bytes)) gives back exactly the bytes.
std::u16string Widen(std::string_view bytes);
std::string Narrow(std::u16string_view text);

}  // namespace korvalin::host
