#pragma once

#include <cstdint>

namespace korvalin {

// Time scanners: each reads a text as sscanf would with the pattern named, and gives
// milliseconds, or -1 unless every numeric field was converted (null text gives -1). Text
// after the last field is not checked. Results wrap to 32 bits rather than overflow.

int32_t ScanBracketedTime(const char* text);    // "[%02d:%02d:%02d]"   h, m, s
int32_t ScanCommaMillisTime(const char* text);  // "%02d:%02d:%02d,%03d" h, m, s, ms
int32_t ScanDotCentisTime(const char* text);    // "%02d:%02d:%02d.%02d" h, m, s, cs
int32_t ScanColonCentisTime(const char* text);  // "%02d:%02d:%02d:%02d" h, m, s, cs
int32_t ScanPlainTime(const char* text);        // "%d:%d:%d"            h, m, s
int32_t ScanColonMillisTime(const char* text);  // "%02d:%02d:%02d:%03d" h, m, s, ms

// "{digits}" at cursor: the number, with cursor moved past the "}". "{}" gives 0. Anything
// else gives -1 and leaves cursor alone. Numbers beyond 32 bits saturate.
int32_t ScanFrameNumber(const char*& cursor);

}  // namespace korvalin
