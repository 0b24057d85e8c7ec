#include "base/string_search.h"

#include <cstring>

#include "base/string_compare.h"

namespace korvalin {
namespace {

const char* OrEmpty(const char* text) { return text ? text : ""; }

}  // namespace

int FindChar(const char* text, char c, int start) {
  text = OrEmpty(text);
  const std::size_t length = std::strlen(text);
  if (start < 0 || static_cast<std::size_t>(start) >= length) return -1;
  const void* hit = std::memchr(text + start, c, length - start);
  return hit ? static_cast<int>(static_cast<const char*>(hit) - text) : -1;
}

int FindText(const char* text, const char* needle, int start) {
  text = OrEmpty(text);
  const std::size_t length = std::strlen(text);
  if (start < 0 || static_cast<std::size_t>(start) >= length) return -1;
  const char* hit = std::strstr(text + start, OrEmpty(needle));
  return hit ? static_cast<int>(hit - text) : -1;
}

int CompareText(const char* a, const char* b) {
  const int order = std::strcmp(OrEmpty(a), OrEmpty(b));  // strcmp compares unsigned bytes
  return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

int CompareTextNoCase(const char* a, const char* b) {
  const int order = CompareIgnoreCase(OrEmpty(a), OrEmpty(b));
  return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

}  // namespace korvalin
