#pragma once

namespace korvalin {

// Searches and comparisons on plain NUL-terminated strings; null counts as "".

// Position of the first c at or after start, or -1 (also when start is not below the length).
int FindChar(const char* text, char c, int start = 0);
// Position of the first needle at or after start, or -1 (also when start is not below the
// length).
int FindText(const char* text, const char* needle, int start = 0);
// -1, 0 or 1, comparing unsigned bytes.
int CompareText(const char* a, const char* b);
// -1, 0 or 1, comparing unsigned bytes with ASCII letters folded to lower case.
int CompareTextNoCase(const char* a, const char* b);

}  // namespace korvalin
