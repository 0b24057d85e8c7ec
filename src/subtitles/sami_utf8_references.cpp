#include "subtitles/sami_utf8_references.h"

#include <cstdint>
#include <string>

#include "platform/code_page.h"

namespace korvalin {
namespace {

struct LatinEntity {
  std::string_view name;
  char32_t character;
};

constexpr LatinEntity kLatinEntities[] = {
    {"&otilde;", 0xF5}, {"&Otilde;", 0xD5}, {"&auml;", 0xE4}, {"&Auml;", 0xC4},
    {"&ouml;", 0xF6},   {"&Ouml;", 0xD6},   {"&uuml;", 0xFC}, {"&Uuml;", 0xDC},
};

constexpr uint32_t kFirstNonAscii = 128;
constexpr uint32_t kCodeLimit = 65536;

// The character of the "&#" reference at the start of text, and the reference's length; 0
// when text starts with no such reference or it names ASCII, a surrogate or nothing. The
// reference is read as the entity decoding reads it: up to the next ";" (at semicolon in
// text, npos when none follows) or the end, by its leading digits.
std::size_t NumericReference(std::string_view text, std::size_t semicolon, char32_t* character) {
  if (text.substr(0, 2) != "&#") return 0;
  const std::size_t length = semicolon == std::string_view::npos ? text.size() : semicolon + 1;
  uint32_t code = 0;
  for (std::size_t i = 2; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    code = code * 10 + static_cast<uint32_t>(text[i] - '0');
    if (code >= kCodeLimit) return 0;
  }
  if (code < kFirstNonAscii || (code >= 0xD800 && code < 0xE000)) return 0;
  // 128 to 159 name Windows-1252 characters in files written on Windows.
  const char byte = static_cast<char>(code);
  *character = code < 160 ? platform::DecodeCodePage(std::string_view(&byte, 1), 1252)[0]
                          : static_cast<char32_t>(code);
  return length;
}

std::size_t NamedReference(std::string_view text, char32_t* character) {
  for (const LatinEntity& entity : kLatinEntities) {
    if (text.substr(0, entity.name.size()) == entity.name) {
      *character = entity.character;
      return entity.name.size();
    }
  }
  return 0;
}

}  // namespace

std::string ReferencesAsUtf8(std::string_view markup) {
  std::string out;
  out.reserve(markup.size());
  std::size_t i = 0;
  // The first ";" after the current "&#", found again only once passed: a caption of "&#"
  // without any ";" is then read in one pass.
  std::size_t semicolon = 0;
  while (i < markup.size()) {
    char32_t character = 0;
    const std::string_view rest = markup.substr(i);
    std::size_t length = 0;
    if (markup[i] == '&') {
      if (semicolon != std::string_view::npos && semicolon < i + 2) {
        semicolon = markup.find(';', i + 2);
      }
      length = NumericReference(
          rest, semicolon == std::string_view::npos ? semicolon : semicolon - i, &character);
    }
    if (markup[i] == '&' && length == 0) length = NamedReference(rest, &character);
    if (length == 0) {
      out.push_back(markup[i++]);
      continue;
    }
    out += platform::EncodeUtf8(std::u32string_view(&character, 1));
    i += length;
  }
  return out;
}

}  // namespace korvalin
