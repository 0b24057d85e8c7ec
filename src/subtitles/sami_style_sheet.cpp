#include "subtitles/sami_style_sheet.h"

#include <algorithm>
#include <unordered_set>

namespace korvalin {
namespace {

bool IsBlank(char c) {
  return static_cast<unsigned char>(c) <= 0x20;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// A value with its quotes removed: Name: "English Captions" and Name: 'French' are common.
std::string_view Unquoted(std::string_view value) {
  value = Trimmed(value);
  if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
      value.back() == value.front()) {
    value = value.substr(1, value.size() - 2);
  }
  return Trimmed(value);
}

// css without its comments; each comment becomes a space so that words stay apart.
std::string WithoutComments(std::string_view css) {
  std::string out;
  std::size_t i = 0;
  while (i < css.size()) {
    if (css.compare(i, 2, "/*") == 0) {
      const std::size_t end = css.find("*/", i + 2);
      i = end == std::string_view::npos ? css.size() : end + 2;
      out.push_back(' ');
    } else if (css.compare(i, 4, "<!--") == 0 || css.compare(i, 3, "-->") == 0) {
      i += css[i] == '<' ? 4 : 3;
      out.push_back(' ');
    } else {
      out.push_back(css[i++]);
    }
  }
  return out;
}

// The class a selector names: ".ENCC" or "P.ENCC"; empty for any other selector.
std::string_view SelectorClass(std::string_view selector) {
  selector = Trimmed(selector);
  if (selector.size() > 2 && (selector[0] == 'p' || selector[0] == 'P') && selector[1] == '.') {
    selector.remove_prefix(1);
  }
  if (selector.empty() || selector[0] != '.') return {};
  selector.remove_prefix(1);
  const auto end = std::find_if(selector.begin(), selector.end(), IsBlank);
  return selector.substr(0, static_cast<std::size_t>(end - selector.begin()));
}

// The value of property (lower case) in a declaration block, or empty.
std::string_view PropertyValue(std::string_view block, std::string_view property) {
  while (!block.empty()) {
    const std::size_t semicolon = std::min(block.find(';'), block.size());
    const std::string_view declaration = block.substr(0, semicolon);
    block.remove_prefix(std::min(semicolon + 1, block.size()));
    const std::size_t colon = declaration.find(':');
    if (colon == std::string_view::npos) continue;
    if (LowerAscii(Trimmed(declaration.substr(0, colon))) == property) {
      return Unquoted(declaration.substr(colon + 1));
    }
  }
  return {};
}

// The stream name a rule gives its classes: its Name, else its lang; empty when neither.
std::string_view RuleName(std::string_view block) {
  const std::string_view name = PropertyValue(block, "name");
  return name.empty() ? PropertyValue(block, "lang") : name;
}

// The classes in order of first appearance, each once: the first rule of a class names it.
class ClassList {
 public:
  void Add(std::string_view className, std::string_view ruleName) {
    std::string key = LowerAscii(className);
    if (!keys_.insert(key).second) return;
    classes_.push_back({std::move(key), std::string(ruleName.empty() ? className : ruleName)});
  }
  std::vector<SamiClass> Take() { return std::move(classes_); }

 private:
  std::vector<SamiClass> classes_;
  std::unordered_set<std::string> keys_;
};

}  // namespace

std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::vector<SamiClass> ReadSamiClasses(std::string_view css) {
  const std::string text = WithoutComments(css);
  ClassList classes;
  std::size_t cursor = 0;
  while (cursor < text.size()) {
    const std::size_t open = text.find('{', cursor);
    if (open == std::string::npos) break;
    const std::size_t close = std::min(text.find('}', open + 1), text.size());
    const std::string_view selectors(text.data() + cursor, open - cursor);
    const std::string_view ruleName = RuleName({text.data() + open + 1, close - open - 1});
    std::size_t start = 0;
    while (start <= selectors.size()) {
      const std::size_t comma = std::min(selectors.find(',', start), selectors.size());
      const std::string_view className = SelectorClass(selectors.substr(start, comma - start));
      if (!className.empty()) classes.Add(className, ruleName);
      start = comma + 1;
    }
    cursor = close + 1;
  }
  return classes.Take();
}

}  // namespace korvalin
