#include "text/entity_decoding.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace korvalin {
namespace {

struct NamedEntity {
  std::string_view name;
  char byte;  // in Windows-1252, whatever the system code page
};

// Each name starts with "&" and holds no other, and none begins another, so no two matches
// overlap; and no replacement byte occurs in a name, so a replacement never makes a new
// match. Replacing all of them in one pass therefore gives what replacing each name over
// the whole text in this order gives, in linear time.
constexpr NamedEntity kNamedEntities[] = {
    {"&nbsp;", ' '},    {"&quot;", '"'},    {"&otilde;", '\xF5'}, {"&Otilde;", '\xD5'},
    {"&auml;", '\xE4'}, {"&Auml;", '\xC4'}, {"&ouml;", '\xF6'},   {"&Ouml;", '\xD6'},
    {"&uuml;", '\xFC'}, {"&Uuml;", '\xDC'},
};
constexpr std::string_view kAmpersand = "&amp;";

constexpr uint32_t kFirstWideCode = 256;
constexpr uint32_t kCodeLimit = 65536;

// The value of the leading decimal digits, saturating at kCodeLimit (which decodes to nothing).
uint32_t LeadingNumber(std::string_view digits) {
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

// A copy of text in which decode(rest, out) may turn what starts at each "&" into output: it
// returns how many bytes of rest it took, 0 leaving the "&" as it is. Text between is copied
// in runs, and nothing put out is looked at again.
template <typename Decode>
std::string DecodeAtAmpersands(std::string_view text, Decode decode) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0;;) {
    const std::size_t amp = text.find('&', i);
    out.append(text.substr(i, amp == std::string_view::npos ? amp : amp - i));
    if (amp == std::string_view::npos) return out;
    const std::size_t taken = decode(text.substr(amp), out);
    if (taken == 0) out.push_back('&');
    i = amp + (taken == 0 ? 1 : taken);
  }
}

std::size_t DecodeNamedEntity(std::string_view rest, std::string& out) {
  for (const NamedEntity& entity : kNamedEntities) {
    if (rest.starts_with(entity.name)) {
      out.push_back(entity.byte);
      return entity.name.size();
    }
  }
  return 0;
}

// "&#" and the digits up to the next ";"; a reference without ";" takes the rest of the text.
std::size_t DecodeNumericReference(std::string_view rest, std::string& out) {
  if (!rest.starts_with("&#")) return 0;
  const std::size_t end = std::min(rest.find(';', 2), rest.size());
  AppendCharacter(LeadingNumber(rest.substr(2, end - 2)), out);
  return std::min(end + 1, rest.size());
}

std::size_t DecodeAmpersand(std::string_view rest, std::string& out) {
  if (!rest.starts_with(kAmpersand)) return 0;
  out.push_back('&');
  return kAmpersand.size();
}

}  // namespace

DynString DecodeEntities(const char* source) {
  const std::string named = DecodeAtAmpersands(source ? source : "", DecodeNamedEntity);
  const std::string numeric = DecodeAtAmpersands(named, DecodeNumericReference);
  const std::string text = DecodeAtAmpersands(numeric, DecodeAmpersand);
  DynString result(text.c_str(), text.size());
  result.TrimRight();
  result.TrimLeft();
  return result;
}

}  // namespace korvalin
