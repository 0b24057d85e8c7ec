#include "text/markup_text.h"

#include <cstring>
#include <string>

namespace korvalin {
namespace {

// Tags that start a new line: paragraphs, lists, tables and rows.
constexpr const char* kBlockTags[] = {"p",   "tl",    "/tl",    "ul", "/ul", "ol",
                                      "/ol", "table", "/table", "tr", "th"};
// Tags that start a new line with an item mark: list items and table cells.
constexpr const char* kItemTags[] = {"td", "dd", "li"};

bool IsWhiteSpace(unsigned char c) {
  return c <= 0x20;
}

char LowerAscii(unsigned char c) {
  if (c < 0x20) return ' ';
  if (c >= 'A' && c <= 'Z') return static_cast<char>(c - 'A' + 'a');
  return static_cast<char>(c);
}

char LastChar(const DynString& text) {
  return text.IsEmpty() ? '\0' : text.c_str()[text.Length() - 1];
}

template <std::size_t N>
bool TagIsOneOf(const char* tag, const char* const (&names)[N]) {
  for (const char* name : names) {
    if (MarkupText::TagIs(tag, name)) return true;
  }
  return false;
}

}  // namespace

void MarkupText::Parse(const char* input) {
  text.Assign("");
  if (!input) return;
  std::string tag;
  bool insideTag = false;
  for (const char* p = input; *p != '\0'; ++p) {
    const unsigned char c = static_cast<unsigned char>(*p);
    if (insideTag) {
      if (c == '>') {
        tag.push_back('>');
        OnTag(tag.c_str());
        insideTag = false;
      } else {
        tag.push_back(LowerAscii(c));
      }
    } else if (c == '<') {
      tag.clear();
      tag.push_back('<');
      insideTag = true;
    } else if (c == ' ' || c < 0x20) {
      AppendSpace();
    } else {
      text.AppendChar(static_cast<char>(c));
    }
  }
}

void MarkupText::OnTag(const char* tag) {
  if (TagIs(tag, "br")) {
    text.AppendChar('\n');
  } else if (TagIsOneOf(tag, kBlockTags)) {
    BreakLine();
  } else if (TagIsOneOf(tag, kItemTags)) {
    BreakLine();
    text.Append("- ");
  } else if (!IsWhiteSpace(static_cast<unsigned char>(LastChar(text)))) {
    text.AppendChar(' ');  // an inline tag between two words still separates them
  }
}

bool MarkupText::TagIs(const char* tag, const char* name) {
  if (!tag || !name || tag[0] != '<') return false;
  const std::size_t length = std::strlen(name);
  if (std::strncmp(tag + 1, name, length) != 0) return false;
  const char after = tag[1 + length];
  return after == '>' || after == ' ' || after == '/';
}

DynString MarkupText::GetAttribute(const char* tag, const char* name) {
  if (!tag || !name) return DynString("");
  const std::size_t length = std::strlen(name);
  const char* found = tag;
  while ((found = std::strchr(found, ' ')) != nullptr) {
    ++found;
    if (std::strncmp(found, name, length) == 0 && found[length] == '=') break;
  }
  if (!found) return DynString("");
  const char* value = found + length + 1;
  char terminator = ' ';
  if (*value == '"' || *value == '\'') terminator = *value++;
  const char* end = std::strchr(value, terminator);
  return end ? DynString(value, static_cast<std::size_t>(end - value)) : DynString(value);
}

void MarkupText::BreakLine() {
  if (!text.IsEmpty() && LastChar(text) != '\n') text.AppendChar('\n');
}

void MarkupText::AppendSpace() {
  if (LastChar(text) != ' ') text.AppendChar(' ');
}

}  // namespace korvalin
