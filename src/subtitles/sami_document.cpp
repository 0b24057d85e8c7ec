#include "subtitles/sami_document.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "base/number_scan.h"

namespace korvalin {
namespace {

bool IsBlank(char c) {
  return static_cast<unsigned char>(c) <= 0x20;
}
bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsNameChar(char c) {
  return IsLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

std::string TrimmedCopy(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return std::string(text);
}

bool SameLetter(char a, char b) {
  const auto lower = [](char c) { return IsLetter(c) ? static_cast<char>(c | 0x20) : c; };
  return lower(a) == lower(b);
}

// Position of needle in text at or after from, letters compared without case; npos if none.
std::size_t FindNoCase(std::string_view text, std::string_view needle, std::size_t from) {
  const auto found =
      std::search(text.begin() + from, text.end(), needle.begin(), needle.end(), SameLetter);
  return found == text.end() ? std::string_view::npos
                             : static_cast<std::size_t>(found - text.begin());
}

// Finds a closing text ("-->", "</style") for openers met in file order. A search is repeated
// only once the scan has passed what it found, so a file of openers without closers costs one
// pass over the text, not one per opener.
class CloserFinder {
 public:
  CloserFinder(std::string_view text, std::string_view closer) : text_(text), closer_(closer) {}

  // The first occurrence at or after from (which never decreases between calls), or npos.
  std::size_t Next(std::size_t from) {
    if (!searched_ || (found_ != std::string_view::npos && found_ < from)) {
      found_ = FindNoCase(text_, closer_, std::min(from, text_.size()));
      searched_ = true;
    }
    return found_;
  }

 private:
  std::string_view text_;
  std::string_view closer_;
  std::size_t found_ = std::string_view::npos;
  bool searched_ = false;
};

// A tag as written from "<" to ">": its lower-case name ("/p" for a closing tag) and text.
struct Tag {
  std::string name;
  std::string_view text;
};

Tag MakeTag(std::string_view text) {
  std::size_t end = 1;
  if (end < text.size() && text[end] == '/') ++end;
  while (end < text.size() && IsNameChar(text[end])) ++end;
  return {LowerAscii(text.substr(1, end - 1)), text};
}

// The value of attribute name (lower case) in a tag: Start=1000, Start = 1000, Class="ENCC".
std::optional<std::string> TagAttribute(const Tag& tag, std::string_view name) {
  const std::string_view text = tag.text;
  std::size_t i = 1 + tag.name.size();
  auto skipBlanks = [&] {
    while (i < text.size() && (IsBlank(text[i]) || text[i] == '/')) ++i;
  };
  while (true) {
    skipBlanks();
    if (i >= text.size() || text[i] == '>') return std::nullopt;
    const std::size_t nameStart = i;
    while (i < text.size() && !IsBlank(text[i]) && text[i] != '=' && text[i] != '>') ++i;
    const std::string attribute = LowerAscii(text.substr(nameStart, i - nameStart));
    while (i < text.size() && IsBlank(text[i])) ++i;
    std::string value;
    if (i < text.size() && text[i] == '=') {
      ++i;
      while (i < text.size() && IsBlank(text[i])) ++i;
      const char quote = i < text.size() && (text[i] == '"' || text[i] == '\'') ? text[i] : '\0';
      if (quote) ++i;
      const std::size_t valueStart = i;
      while (i < text.size() && (quote ? text[i] != quote : !IsBlank(text[i]) && text[i] != '>')) {
        ++i;
      }
      value = text.substr(valueStart, i - valueStart);
      if (quote && i < text.size()) ++i;
    }
    if (attribute == name) return value;
  }
}

// Builds the document from the tags and texts of the file, in order.
class SamiBuilder {
 public:
  void OnText(std::string_view text) {
    if (!inSync_) return;
    if (afterBreak_) {
      while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
      afterBreak_ = text.empty();
    }
    Content().append(text);
  }

  void OnTag(const Tag& tag) {
    if (tag.name == "sami") document_.hasSamiTags = true;
    if (tag.name == "sync") {
      StartSync(tag);
    } else if (tag.name == "/sync" || tag.name == "/body" || tag.name == "/sami") {
      EndSync();
    } else if (!inSync_) {
      return;  // whatever lies outside a SYNC is no caption
    } else if (tag.name == "p") {
      StartParagraph(tag);
    } else if (tag.name == "/p") {
      EndParagraph();
    } else if (tag.name == "br") {
      std::string& content = Content();
      while (!content.empty() && IsBlank(content.back())) content.pop_back();
      content.append(tag.text);
      afterBreak_ = true;
    } else {
      Content().append(tag.text);
    }
  }

  void OnStyle(std::string_view css) {
    for (SamiClass& added : ReadSamiClasses(css)) document_.classes.push_back(std::move(added));
  }

  SamiDocument Finish() {
    EndSync();
    return std::move(document_);
  }

 private:
  std::string& Content() { return inParagraph_ ? paragraph_.markup : syncContent_; }

  void StartSync(const Tag& tag) {
    EndSync();
    document_.hasSamiTags = true;
    const std::optional<std::string> start = TagAttribute(tag, "start");
    int32_t startMs = 0;
    if (!start || !ScanInt(start->c_str(), &startMs)) return;  // no time: left out
    inSync_ = true;
    sync_ = SamiSync{startMs, {}};
    syncContent_.clear();
  }

  void EndSync() {
    if (!inSync_) return;
    EndParagraph();
    if (sync_.paragraphs.empty()) sync_.paragraphs.push_back({"", TrimmedCopy(syncContent_)});
    document_.syncs.push_back(std::move(sync_));
    inSync_ = false;
  }

  void StartParagraph(const Tag& tag) {
    EndParagraph();
    inParagraph_ = true;
    const std::string className = TagAttribute(tag, "class").value_or("");
    paragraph_.classKey = LowerAscii(className);
    paragraph_.markup.clear();
    paragraphTag_ = tag.text;
    if (paragraph_.classKey.empty() || !usedKeys_.insert(paragraph_.classKey).second) return;
    document_.usedClasses.push_back({paragraph_.classKey, className});
  }

  void EndParagraph() {
    if (!inParagraph_) return;
    paragraph_.markup = std::string(paragraphTag_) + TrimmedCopy(paragraph_.markup);
    sync_.paragraphs.push_back(std::move(paragraph_));
    paragraph_ = SamiParagraph{};
    inParagraph_ = false;
  }

  SamiDocument document_;
  std::unordered_set<std::string> usedKeys_;  // of document_.usedClasses
  SamiSync sync_;
  std::string syncContent_;
  SamiParagraph paragraph_;
  std::string_view paragraphTag_;
  bool inSync_ = false;
  bool inParagraph_ = false;
  bool afterBreak_ = false;  // white space that follows a <br> is dropped
};

// Walks the file's text, tags and declarations in order, handing them to the builder.
class SamiScanner {
 public:
  explicit SamiScanner(std::string_view bytes)
      : bytes_(bytes), commentEnds_(bytes, "-->"), styleEnds_(bytes, "</style") {}

  SamiDocument Scan();

 private:
  std::size_t SkipDeclaration(std::size_t pos);
  std::size_t ReadStyle(std::size_t pos);

  std::string_view bytes_;
  CloserFinder commentEnds_;
  CloserFinder styleEnds_;
  SamiBuilder builder_;
};

// End of the comment or declaration at pos ("<!--" to "-->", "<!" or "<?" to ">"). An
// unterminated comment ends at the next ">" rather than swallowing the file.
std::size_t SamiScanner::SkipDeclaration(std::size_t pos) {
  if (bytes_.compare(pos, 4, "<!--") == 0) {
    const std::size_t end = commentEnds_.Next(pos + 4);
    if (end != std::string_view::npos) return end + 3;
  }
  const std::size_t close = bytes_.find('>', pos);
  return close == std::string_view::npos ? bytes_.size() : close + 1;
}

// After a STYLE tag ending at pos: its CSS goes to the builder and the scan resumes after
// "</STYLE>". Without a closing tag the block is ignored.
std::size_t SamiScanner::ReadStyle(std::size_t pos) {
  const std::size_t close = styleEnds_.Next(pos);
  if (close == std::string_view::npos) return pos;
  builder_.OnStyle(bytes_.substr(pos, close - pos));
  const std::size_t end = bytes_.find('>', close);
  return end == std::string_view::npos ? bytes_.size() : end + 1;
}

SamiDocument SamiScanner::Scan() {
  std::size_t pos = 0;
  while (pos < bytes_.size()) {
    const std::size_t open = std::min(bytes_.find('<', pos), bytes_.size());
    builder_.OnText(bytes_.substr(pos, open - pos));
    if (open == bytes_.size()) break;
    const char next = open + 1 < bytes_.size() ? bytes_[open + 1] : '\0';
    const char afterSlash = open + 2 < bytes_.size() ? bytes_[open + 2] : '\0';
    if (next == '!' || next == '?') {
      pos = SkipDeclaration(open);
    } else if (IsLetter(next) || (next == '/' && IsLetter(afterSlash))) {
      const std::size_t close = bytes_.find('>', open);
      if (close == std::string_view::npos) break;  // a tag cut off by the end is dropped
      const Tag tag = MakeTag(bytes_.substr(open, close - open + 1));
      builder_.OnTag(tag);
      pos = close + 1;
      if (tag.name == "style") pos = ReadStyle(pos);
    } else {
      builder_.OnText("<");  // a lone "<" in the text
      pos = open + 1;
    }
  }
  return builder_.Finish();
}

}  // namespace

SamiDocument ReadSamiDocument(std::string_view bytes) {
  return SamiScanner(bytes).Scan();
}

}  // namespace korvalin
