#include "render/subrip_markup.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace korvalin {
namespace {

std::u32string Wide(std::string_view ascii) {
  return std::u32string(ascii.begin(), ascii.end());
}

// Each styled run as {flags#colour:text}, plain runs as their text; colours as the image
// word (red in the low byte).
std::string Describe(const platform::StyledText& styled) {
  std::string out;
  std::size_t begin = 0;
  for (const platform::TextRun& run : styled.runs) {
    const std::string text(styled.text.begin() + begin, styled.text.begin() + run.end);
    begin = run.end;
    const platform::TextStyle& s = run.style;
    if (s == platform::TextStyle{}) {
      out += text;
      continue;
    }
    std::string flags = std::string(s.italic ? "i" : "") + (s.bold ? "b" : "") +
                        (s.underline ? "u" : "") + (s.strikeOut ? "s" : "");
    if (s.colour) {
      char colour[16];
      std::snprintf(colour, sizeof colour, "#%06X", *s.colour);
      flags += colour;
    }
    out += "{" + flags + ":" + text + "}";
  }
  return out + std::string(styled.text.begin() + begin, styled.text.end());
}

TEST(SubRipMarkup, TagsBecomeRunsAndLeaveTheText) {
  const struct {
    const char* markup;
    const char* styled;
  } cases[] = {
      {"Hello <i>world</i>, this is a test", "Hello {i:world}, this is a test"},
      {"<I>up</I><B>per</b>", "{i:up}{b:per}"},
      {"<b>bold <i>both</i></b> none", "{b:bold }{ib:both} none"},
      {"<i><i>x</i>y</i>z", "{i:xy}z"},  // nested twice, closed twice
      {"<u>u</u><s>s</s>", "{u:u}{s:s}"},
      {"<i>two\nlines</i>", "{i:two\nlines}"},
      {"<i>left open", "{i:left open}"},
      {"</i>closed first<i>", "closed first"},
      {"<font color=\"#FF0000\">red</font>", "{#0000FF:red}"},
      {"<FONT COLOR='00ff80'>hex</FONT>", "{#80FF00:hex}"},
      {"<font face=\"Arial\" color=blue size=3>b</font>", "{#FF0000:b}"},
      {"<font color=\"red\">r<font color=\"lime\">g</font>r</font>",
       "{#0000FF:r}{#00FF00:g}{#0000FF:r}"},
      {"<font color=\"nonsense\">plain</font>", "plain"},
      {"<font size=2>plain</font>", "plain"},
      {"<x>unknown</x> <br> <i/> < i>", "<x>unknown</x> <br> <i/> < i>"},
      {"a < b > c <i", "a < b > c <i"},
      {"<i\n>x", "<i\n>x"},  // a tag is closed on its own line
      {"<<i>>", "<{i:>}"},
      {"", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Describe(ParseSubRipMarkup(Wide(c.markup))), c.styled) << c.markup;
  }
}

TEST(SubRipMarkup, ColoursAreHexOrHtmlNames) {
  const struct {
    const char* value;
    std::optional<uint32_t> word;  // red in the low byte
  } cases[] = {
      {"#FF0000", 0x0000FF},    {"ff0000", 0x0000FF},   {"#123456", 0x563412},
      {"Red", 0x0000FF},        {"white", 0xFFFFFF},    {"black", 0x000000},
      {"NAVY", 0x800000},       {"fuchsia", 0xFF00FF},  {"silver", 0xC0C0C0},
      {"teal", 0x808000},       {"#FFF", std::nullopt}, {"#red", std::nullopt},
      {"12345G", std::nullopt}, {"", std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(ParseSubRipColour(Wide(c.value)), c.word) << c.value;
}

TEST(SubRipMarkup, ManyUnclosedTagsStayLinear) {
  std::u32string text;
  for (int i = 0; i < 200000; ++i) text += U"<font ";
  EXPECT_EQ(ParseSubRipMarkup(text).text, text);
  text.clear();
  for (int i = 0; i < 100000; ++i) text += U"<i><font color=red>";
  EXPECT_TRUE(ParseSubRipMarkup(text).text.empty());
}

}  // namespace
}  // namespace korvalin
