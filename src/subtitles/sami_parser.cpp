#include "subtitles/sami_parser.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "platform/code_page.h"
#include "subtitles/sami_utf8_references.h"
#include "subtitles/subtitle_entry.h"

namespace korvalin {
namespace {

constexpr int64_t kUnitsPerMs = 10000;
constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LeBom = "\xFF\xFE";
constexpr std::string_view kUtf16BeBom = "\xFE\xFF";

// UTF-16 text (after its byte order mark) as UTF-8; unpaired surrogates become U+FFFD.
std::string Utf16ToUtf8(std::string_view bytes, bool bigEndian) {
  std::u32string text;
  auto unitAt = [&](std::size_t i) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    return static_cast<char32_t>(bigEndian ? (first << 8) | second : (second << 8) | first);
  };
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t unit = unitAt(i);
    if (unit >= 0xD800 && unit < 0xDC00 && i + 3 < bytes.size()) {
      const char32_t low = unitAt(i + 2);
      if (low >= 0xDC00 && low < 0xE000) {
        unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    text.push_back(unit);
  }
  return platform::EncodeUtf8(text);
}

const SamiClass* FindClass(const std::vector<SamiClass>& classes, const std::string& key) {
  for (const SamiClass& known : classes) {
    if (known.key == key) return &known;
  }
  return nullptr;
}

}  // namespace

bool SamiParser::Load(const char* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return !file.bad() && Parse(bytes);
}

bool SamiParser::Parse(std::string_view bytes) {
  if (bytes.substr(0, kUtf8Bom.size()) == kUtf8Bom) bytes.remove_prefix(kUtf8Bom.size());
  std::string converted;
  for (std::string_view bom : {kUtf16LeBom, kUtf16BeBom}) {
    if (bytes.substr(0, bom.size()) != bom) continue;
    converted = Utf16ToUtf8(bytes.substr(bom.size()), bom == kUtf16BeBom);
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
  for (const SamiClass& declared : document.classes) {
    if (FindClass(document.usedClasses, declared.key)) streams_.push_back(declared);
  }
  for (const SamiClass& used : document.usedClasses) {
    if (!FindClass(document.classes, used.key)) streams_.push_back(used);
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
