#pragma once

#include <cstdint>

namespace korvalin {

// Numbers at the start of a text as sscanf's "%d" and "%f" read them: leading white space
// skipped, then the longest number that fits; whatever follows is not checked. False when no
// number is there (null text included). Integers beyond 32 bits are clamped, never undefined.
bool ScanInt(const char* text, int32_t* value);
// Reads the same way whatever the locale. stop, when given, receives the first character
// after the number.
bool ScanFloat(const char* text, float* value, const char** stop = nullptr);

}  // namespace korvalin
