#include "render/subrip_markup.h"

#include <array>
#include <vector>

namespace korvalin {
namespace {

using platform::StyledText;
using platform::TextStyle;

char32_t Lower(char32_t c) {
  return c >= U'A' && c <= U'Z' ? c + (U'a' - U'A') : c;
}

bool IsSpace(char32_t c) {
  return c == U' ' || c == U'\t';
}

bool EqualsNoCase(std::u32string_view text, std::string_view lowerAscii) {
  if (text.size() != lowerAscii.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (Lower(text[i]) != static_cast<char32_t>(lowerAscii[i])) return false;
  }
  return true;
}

int HexDigit(char32_t c) {
  if (c >= U'0' && c <= U'9') return static_cast<int>(c - U'0');
  c = Lower(c);
  if (c >= U'a' && c <= U'f') return static_cast<int>(c - U'a' + 10);
  return -1;
}

struct NamedColour {
  std::string_view name;
  uint32_t rgb;  // 0xRRGGBB as written in HTML
};

// The sixteen HTML basic colours and the other names subtitle editors write most.
constexpr std::array<NamedColour, 20> kNamedColours{{
    {"white", 0xFFFFFF},   {"silver", 0xC0C0C0},  {"gray", 0x808080},   {"grey", 0x808080},
    {"black", 0x000000},   {"red", 0xFF0000},     {"maroon", 0x800000}, {"yellow", 0xFFFF00},
    {"olive", 0x808000},   {"lime", 0x00FF00},    {"green", 0x008000},  {"aqua", 0x00FFFF},
    {"cyan", 0x00FFFF},    {"teal", 0x008080},    {"blue", 0x0000FF},   {"navy", 0x000080},
    {"fuchsia", 0xFF00FF}, {"magenta", 0xFF00FF}, {"purple", 0x800080}, {"orange", 0xFFA500},
}};

// 0xRRGGBB to the drawing's 0x00BBGGRR.
uint32_t FromHtmlOrder(uint32_t rgb) {
  return (rgb >> 16 & 0xFF) | (rgb & 0xFF00) | (rgb & 0xFF) << 16;
}

std::optional<uint32_t> ParseHexColour(std::u32string_view digits) {
  if (digits.size() != 6) return std::nullopt;
  uint32_t rgb = 0;
  for (char32_t c : digits) {
    const int digit = HexDigit(c);
    if (digit < 0) return std::nullopt;
    rgb = rgb << 4 | static_cast<uint32_t>(digit);
  }
  return rgb;
}

enum class TagName { Italic, Bold, Underline, StrikeOut, Font };

struct Tag {
  TagName name = TagName::Italic;
  bool closing = false;
  std::optional<uint32_t> colour;  // an opening font tag's colour, when it names one
  std::size_t length = 0;          // code points from '<' to '>', both included
};

std::optional<TagName> TagNameOf(std::u32string_view name) {
  static constexpr std::array<std::pair<std::string_view, TagName>, 5> kNames{{
      {"i", TagName::Italic},
      {"b", TagName::Bold},
      {"u", TagName::Underline},
      {"s", TagName::StrikeOut},
      {"font", TagName::Font},
  }};
  for (const auto& [text, tag] : kNames) {
    if (EqualsNoCase(name, text)) return tag;
  }
  return std::nullopt;
}

std::size_t SkipSpaces(std::u32string_view text, std::size_t at) {
  while (at < text.size() && IsSpace(text[at])) ++at;
  return at;
}

// The colour named by the color attribute among a font tag's attributes
// (name=value, name="value" or name='value', separated by spaces).
std::optional<uint32_t> ColourAttribute(std::u32string_view attributes) {
  std::optional<uint32_t> colour;
  std::size_t at = SkipSpaces(attributes, 0);
  while (at < attributes.size()) {
    const std::size_t nameStart = at;
    while (at < attributes.size() && !IsSpace(attributes[at]) && attributes[at] != U'=') ++at;
    const std::u32string_view name = attributes.substr(nameStart, at - nameStart);
    at = SkipSpaces(attributes, at);
    std::u32string_view value;
    if (at < attributes.size() && attributes[at] == U'=') {
      at = SkipSpaces(attributes, at + 1);
      const bool quoted =
          at < attributes.size() && (attributes[at] == U'"' || attributes[at] == U'\'');
      const char32_t quote = quoted ? attributes[at++] : U' ';
      const std::size_t valueStart = at;
      while (at < attributes.size() && attributes[at] != quote &&
             !(!quoted && IsSpace(attributes[at]))) {
        ++at;
      }
      value = attributes.substr(valueStart, at - valueStart);
      if (quoted && at < attributes.size()) ++at;
    }
    if (EqualsNoCase(name, "color")) colour = ParseSubRipColour(value);
    at = SkipSpaces(attributes, at);
  }
  return colour;
}

// The SubRip tag that starts at text[at] == '<', or nothing when none does. The search for
// its '>' stops at the next '<' or line break, so that scanning stays linear in the text.
std::optional<Tag> ReadTag(std::u32string_view text, std::size_t at) {
  std::size_t end = at + 1;
  while (end < text.size() && text[end] != U'>') {
    if (text[end] == U'<' || text[end] == U'\n' || text[end] == U'\r') return std::nullopt;
    ++end;
  }
  if (end >= text.size()) return std::nullopt;
  std::u32string_view inside = text.substr(at + 1, end - at - 1);
  Tag tag;
  tag.length = end - at + 1;
  tag.closing = !inside.empty() && inside.front() == U'/';
  if (tag.closing) inside.remove_prefix(1);
  std::size_t nameEnd = 0;
  while (nameEnd < inside.size() && !IsSpace(inside[nameEnd])) ++nameEnd;
  const std::optional<TagName> name = TagNameOf(inside.substr(0, nameEnd));
  if (!name) return std::nullopt;
  tag.name = *name;
  const std::u32string_view rest = inside.substr(nameEnd);
  if (tag.name == TagName::Font && !tag.closing) {
    tag.colour = ColourAttribute(rest);
  } else if (SkipSpaces(rest, 0) != rest.size()) {
    return std::nullopt;  // only a font tag takes attributes
  }
  return tag;
}

// The styles open at a point of the text; a style holds while its count is above 0.
class OpenStyles {
 public:
  void Apply(const Tag& tag) {
    if (tag.name == TagName::Font) {
      if (!tag.closing) {
        colours_.push_back(tag.colour ? tag.colour : Colour());
      } else if (!colours_.empty()) {
        colours_.pop_back();
      }
      return;
    }
    int& count = counts_[static_cast<std::size_t>(tag.name)];
    if (!tag.closing) {
      ++count;
    } else if (count > 0) {
      --count;
    }
  }

  TextStyle Current() const {
    TextStyle style;
    style.italic = counts_[static_cast<std::size_t>(TagName::Italic)] > 0;
    style.bold = counts_[static_cast<std::size_t>(TagName::Bold)] > 0;
    style.underline = counts_[static_cast<std::size_t>(TagName::Underline)] > 0;
    style.strikeOut = counts_[static_cast<std::size_t>(TagName::StrikeOut)] > 0;
    style.colour = Colour();
    return style;
  }

 private:
  std::optional<uint32_t> Colour() const {
    return colours_.empty() ? std::nullopt : colours_.back();
  }

  std::array<int, 4> counts_{};  // italic, bold, underline, strike-through
  std::vector<std::optional<uint32_t>> colours_;
};

void Append(StyledText& out, char32_t c, const TextStyle& style) {
  out.text.push_back(c);
  if (out.runs.empty() || !(out.runs.back().style == style)) {
    out.runs.push_back({out.text.size(), style});
  } else {
    out.runs.back().end = out.text.size();
  }
}

}  // namespace

std::optional<uint32_t> ParseSubRipColour(std::u32string_view value) {
  const bool hashed = !value.empty() && value.front() == U'#';
  if (std::optional<uint32_t> rgb = ParseHexColour(hashed ? value.substr(1) : value)) {
    return FromHtmlOrder(*rgb);
  }
  for (const NamedColour& named : kNamedColours) {
    if (EqualsNoCase(value, named.name)) return FromHtmlOrder(named.rgb);
  }
  return std::nullopt;
}

platform::StyledText ParseSubRipMarkup(std::u32string_view text) {
  StyledText out;
  out.text.reserve(text.size());
  OpenStyles open;
  TextStyle style;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == U'<') {
      if (const std::optional<Tag> tag = ReadTag(text, i)) {
        open.Apply(*tag);
        style = open.Current();
        i += tag->length - 1;
        continue;
      }
    }
    Append(out, text[i], style);
  }
  return out;
}

}  // namespace korvalin
