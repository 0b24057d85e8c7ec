#include "subtitles/sami_parser.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "platform/code_page.h"
#include "subtitles/sami_utf8_references.h"
#include "subtitles/subtitle_entry.h"
#include "subtitles/subtitle_file.h"
#include "text/wide_text.h"

namespace korvalin {
namespace {

constexpr int64_t kUnitsPerMs = 10000;

std::unordered_set<std::string_view> KeysOf(const std::vector<SamiClass>& classes) {
  std::unordered_set<std::string_view> keys;
  for (const SamiClass& c : classes) keys.insert(c.key);
  return keys;
}

}  // namespace

bool SamiParser::Load(const char* path) {
  std::string bytes;
  return ReadSubtitleText(path, &bytes) && Parse(bytes);
}

bool SamiParser::Parse(std::string_view bytes) {
  const ByteOrderMark mark = FindByteOrderMark(bytes);
  bytes.remove_prefix(mark.length);
  std::string converted;
  if (IsWideEncoding(mark.encoding)) {
    converted = WideTextToUtf8(bytes, mark.encoding);
    bytes = converted;
  }
  SamiDocument document = ReadSamiDocument(bytes);
  BuildStreams(document);
  syncs_ = std::move(document.syncs);
  utf8_ = platform::IsMultiByteUtf8(bytes);
  enabled_ = 0;
  return document.hasSamiTags;
}

void SamiParser::BuildStreams(const SamiDocument& document) {
  streams_.clear();
  const std::unordered_set<std::string_view> used = KeysOf(document.usedClasses);
  const std::unordered_set<std::string_view> declared = KeysOf(document.classes);
  for (const SamiClass& c : document.classes) {
    if (used.contains(c.key)) streams_.push_back(c);
  }
  for (const SamiClass& c : document.usedClasses) {
    if (!declared.contains(c.key)) streams_.push_back(c);
  }
}

void SamiParser::Enable(std::size_t index) {
  if (index < streams_.size()) enabled_ = index;
}

bool SamiParser::MarkupFor(const SamiSync& sync, std::string* markup) const {
  bool found = false;
  markup->clear();
  for (const SamiParagraph& paragraph : sync.paragraphs) {
    if (streams_.empty() || paragraph.classKey.empty() ||
        paragraph.classKey == streams_[enabled_].key) {
      markup->append(paragraph.markup);
      found = true;
    }
  }
  return found;
}

std::vector<SamiCaption> SamiParser::Captions() const {
  std::vector<SamiCaption> captions;
  std::string markup;
  for (const SamiSync& sync : syncs_) {
    if (!MarkupFor(sync, &markup)) continue;
    captions.push_back({utf8_ ? ReferencesAsUtf8(markup) : markup, sync.startMs * kUnitsPerMs, 0});
  }
  std::stable_sort(captions.begin(), captions.end(),
                   [](const SamiCaption& a, const SamiCaption& b) { return a.start < b.start; });
  for (std::size_t i = 0; i < captions.size(); ++i) {
    captions[i].stop = i + 1 < captions.size() ? captions[i + 1].start - 1 : OpenEnd * kUnitsPerMs;
  }
  return captions;
}

}  // namespace korvalin
