#include "subtitles/readers/realtext_reader.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "base/number_scan.h"
#include "base/std_file.h"
#include "subtitles/byte_budget.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/subtitle_file.h"
#include "text/entity_decoding.h"
#include "text/markup_text.h"

namespace korvalin {
namespace {

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";
// Text that grows without a <clear> keeps only its last lines up to this length: a screen
// shows less (some ten lines of fifty), and every time tag stores the text again, so a file
// that never clears costs time and memory by this length for each tag.
constexpr int kLongestShownText = 512;

// Every time tag stores the text shown so far once more, so a file of time tags without
// <clear> stores far more than its size. What the entries may take in memory: a real file
// stays well below it, and one beyond it is refused.
constexpr std::size_t kStoredBytesPerFileByte = 24;
constexpr std::size_t kStoredBytesMinimum = std::size_t{32} << 20;
// An entry's memory: the entry with its heap overhead and slot, and its text's buffer, which
// grows by a fifth beyond what it holds.
constexpr std::size_t kEntryBytes = 128;
constexpr std::size_t StoredBytes(std::size_t textLength) {
  return kEntryBytes + textLength + textLength / 4;
}

// Collects the text between tags and stores it as an entry at every time tag and at the end.
class RealTextHandler : public MarkupText {
 public:
  RealTextHandler(SubtitleTrack& track, std::size_t fileSize)
      : track_(track), budget_(kStoredBytesMinimum + fileSize * kStoredBytesPerFileByte) {}

  void OnTag(const char* tag) override {
    if (TagIs(tag, "time")) {
      Flush();
      begin_ = RealTextTimeToMs(GetAttribute(tag, "begin").c_str());
      end_ = RealTextTimeToMs(GetAttribute(tag, "end").c_str());
      if (end_ == -1) end_ = 0;  // open: until the next entry
    } else if (TagIs(tag, "clear")) {
      text.Assign("");
    } else {
      MarkupText::OnTag(tag);
    }
  }

  // The text stays: the next time tag shows it again, with whatever follows.
  void Flush() {
    KeepLastLines();
    if (begin_ == -1 || budget_.Exceeded()) return;
    const DynString shown = DecodeEntities(text.c_str());
    if (!budget_.Spend(StoredBytes(shown.Length()))) return;
    track_.AddEntry(std::make_unique<SubtitleEntry>(begin_, end_, shown.c_str()));
  }

  // True when the file would store more than a track may hold; its entries are incomplete.
  bool Exhausted() const { return budget_.Exceeded(); }

 private:
  void KeepLastLines() {
    if (text.Length() <= static_cast<std::size_t>(kLongestShownText)) return;
    DynString tail = text.Right(kLongestShownText);
    const int lineFeed = tail.Find("\n");
    text = lineFeed >= 0 ? tail.Mid(lineFeed + 1) : tail;
  }

  SubtitleTrack& track_;
  ByteBudget budget_;
  int32_t begin_ = -1;
  int32_t end_ = 0;
};

// ms from whole minutes and seconds, clamped to what 32 bits hold.
int32_t ToMs(int64_t minutes, float seconds) {
  const double ms = static_cast<double>(minutes) * 60000.0 + std::trunc(seconds * 1000.0f);
  constexpr double kMax = std::numeric_limits<int32_t>::max();
  constexpr double kMin = std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(ms > kMax ? kMax : (ms < kMin ? kMin : ms));
}

}  // namespace

int32_t RealTextTimeToMs(const char* value) {
  if (!value || *value == '\0') return -1;
  constexpr int64_t kLargestMinutes = int64_t{1} << 40;  // far beyond 32-bit ms, no overflow
  int64_t minutes = 0;
  const char* rest = value;
  for (const char* colon = std::strchr(rest, ':'); colon; colon = std::strchr(rest, ':')) {
    int32_t part = 0;
    if (!ScanInt(rest, &part)) return -1;
    minutes = minutes * 60 + part;
    if (minutes > kLargestMinutes) minutes = kLargestMinutes;
    if (minutes < -kLargestMinutes) minutes = -kLargestMinutes;
    rest = colon + 1;
  }
  float seconds = 0;
  if (!ScanFloat(rest, &seconds) || !std::isfinite(seconds)) return -1;
  return ToMs(minutes, seconds);
}

int ReadRealText(SubtitleTrack& track, const char* path) {
  StdFile file;
  if (BeginReading(track, file, path, "rb", "RealText") != 0) return -1;
  std::string bytes;
  if (!ReadWholeFile(file, &bytes)) return -1;
  const bool hasBom = bytes.starts_with(kUtf8Bom);
  RealTextHandler handler(track, bytes.size() + 1);  // as counted with the terminating zero
  handler.Parse(bytes.c_str() + (hasBom ? 3 : 0));
  handler.Flush();
  if (handler.Exhausted()) {
    track.Reset();
    return -1;
  }
  return FinishReading(track, file, CleanUp::kSortCloseOpenEndsAndRemoveEmpty);
}

}  // namespace korvalin
