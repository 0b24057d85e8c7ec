#include "text/entity_decoding.h"

#include <cstdint>
#include <string>

#include "platform/code_page.h"

namespace korvalin {
namespace {

struct NamedEntity {
  const char* name;
  const char* byte;  // in Windows-1252, whatever the system code page
};

// Replaced in this order, each over the whole text.
constexpr NamedEntity kNamedEntities[] = {
    {"&nbsp;", " "},    {"&quot;", "\""},   {"&otilde;", "\xF5"}, {"&Otilde;", "\xD5"},
    {"&auml;", "\xE4"}, {"&Auml;", "\xC4"}, {"&ouml;", "\xF6"},   {"&Ouml;", "\xD6"},
    {"&uuml;", "\xFC"}, {"&Uuml;", "\xDC"},
};

constexpr uint32_t kFirstWideCode = 256;
constexpr uint32_t kCodeLimit = 65536;

// The value of the leading decimal digits, saturating at kCodeLimit (which decodes to nothing).
uint32_t LeadingNumber(const std::string& digits) {
  uint32_t value = 0;
  for (char c : digits) {
    if (c < '0' || c > '9') break;
    value = value * 10 + static_cast<uint32_t>(c - '0');
    if (value >= kCodeLimit) return kCodeLimit;
  }
  return value;
}

void AppendCharacter(uint32_t code, std::string& out) {
  if (code == 0 || code >= kCodeLimit) return;
  if (code < kFirstWideCode) {
    out.push_back(static_cast<char>(code));
    return;
  }
  // One UTF-16 unit in the system code page; a missing character becomes its default one.
  const std::u32string character(1, static_cast<char32_t>(code));
  out += platform::EncodeCodePage(character, platform::SystemCodePage());
}

// "&#" references decoded; a reference without ";" takes the rest of the text.
std::string DecodeNumericReferences(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    if (text[i] != '&' || i + 1 >= text.size() || text[i + 1] != '#') {
      out.push_back(text[i++]);
      continue;
    }
    const std::size_t begin = i + 2;
    std::size_t end = text.find(';', begin);
    if (end == std::string::npos) end = text.size();
    AppendCharacter(LeadingNumber(text.substr(begin, end - begin)), out);
    i = end + 1;
  }
  return out;
}

}  // namespace

DynString DecodeEntities(const char* source) {
  DynString named(source ? source : "");
  for (const NamedEntity& entity : kNamedEntities) {
    named.Replace(entity.name, entity.byte, DynString::kReplaceAll);
  }
  const std::string numeric = DecodeNumericReferences(std::string(named.c_str(), named.Length()));
  DynString result(numeric.c_str(), numeric.size());
  result.Replace("&amp;", "&", DynString::kReplaceAll);
  result.TrimRight();
  result.TrimLeft();
  return result;
}

}  // namespace korvalin
