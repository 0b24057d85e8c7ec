#include "text/markup_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/entity_decoding.h"

namespace korvalin {
namespace {

// What a SAMI caption becomes: markup to text, then entities decoded and ends trimmed.
std::string Plain(const char* markup) {
  MarkupText markupText;
  markupText.Parse(markup);
  return DecodeEntities(markupText.text.c_str()).c_str();
}

TEST(MarkupText, TurnsTagsIntoLineBreaksItemMarksAndWordGaps) {
  const struct {
    const char* markup;
    const char* text;
  } cases[] = {
      {"Hello<br>World", "Hello\nWorld"},
      {"Hello<BR>World", "Hello\nWorld"},
      {"a<br><br/>b", "a\n\nb"},  // a break after a break still counts
      {"<p>One</p><p>Two</p>", "One \nTwo"},
      {"<ul><li>a<li>b</ul>", "- a\n- b"},
      {"<table><tr><td>x<td>y</table>", "- x\n- y"},
      {"a  \r\n  b", "a b"},
      {"<b>x</b>y", "x y"},
      {"x<brx>y", "x y"},  // not a break: an unknown tag
      {"<p>\n <br> \t</p>", ""},
      {"a<P CLASS=X>b", "a\nb"},
      {"open <font", "open"},  // an unterminated tag is dropped
  };
  for (const auto& c : cases) EXPECT_EQ(Plain(c.markup), c.text) << c.markup;
}

TEST(MarkupText, HandsLoweredTagsWithoutControlBytesToOnTag) {
  struct Recorder : MarkupText {
    void OnTag(const char* tag) override { tags.push_back(tag); }
    std::vector<std::string> tags;
  } recorder;
  recorder.Parse("<P Class=ENUSCC>x</P><Time\tBegin=\"1\"/>");
  EXPECT_EQ(recorder.tags,
            (std::vector<std::string>{"<p class=enuscc>", "</p>", "<time begin=\"1\"/>"}));
  EXPECT_EQ(recorder.text, "x");
  recorder.Parse(nullptr);
  EXPECT_TRUE(recorder.text.IsEmpty());
}

TEST(MarkupText, TagIsMatchesWholeNamesOnly) {
  EXPECT_TRUE(MarkupText::TagIs("<br>", "br"));
  EXPECT_TRUE(MarkupText::TagIs("<br/>", "br"));
  EXPECT_TRUE(MarkupText::TagIs("<br clear=all>", "br"));
  EXPECT_FALSE(MarkupText::TagIs("<brx>", "br"));
  EXPECT_FALSE(MarkupText::TagIs("</br>", "br"));
  EXPECT_FALSE(MarkupText::TagIs("<b", "br"));
}

TEST(MarkupText, GetAttributeReadsQuotedAndBareValues) {
  const struct {
    const char* tag;
    const char* name;
    const char* value;
  } cases[] = {
      {"<time begin=\"1:02\" end='3'/>", "begin", "1:02"},
      {"<time begin=\"1:02\" end='3'/>", "end", "3"},
      {"<time begin=10 end=20>", "begin", "10"},
      {"<time begin=10>", "begin", "10>"},  // the last bare value runs to the tag's end
      {"<time begin=\"10>", "begin", "10>"},
      {"<time xbegin=5 begin=6>", "begin", "6>"},
      {"<time>", "begin", ""},
      {"<time begin=1>", "end", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MarkupText::GetAttribute(c.tag, c.name), c.value) << c.tag << " " << c.name;
  }
}

}  // namespace
}  // namespace korvalin
