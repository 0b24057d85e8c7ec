#include "subtitles/readers/realtext_reader.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "base/std_file.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/subtitle_file.h"
#include "text/entity_decoding.h"
#include "text/markup_text.h"
#include "base/number_scan.h"

namespace korvalin {
namespace {

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";
// Text that grows without a <clear> keeps only its last lines up to this length: a screen
// shows far less, and a file that never clears would otherwise cost time and memory by the
// square of its length.
constexpr int kLongestShownText = 1024;

// Collects the text between tags and stores it as an entry at every time tag and at the end.
class RealTextHandler : public MarkupText {
 public:
  explicit RealTextHandler(SubtitleTrack& track) : track_(track) {}

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
    if (begin_ == -1) return;
    track_.AddEntry(
        std::make_unique<SubtitleEntry>(begin_, end_, DecodeEntities(text.c_str()).c_str()));
  }

 private:
  void KeepLastLines() {
    if (text.Length() <= static_cast<std::size_t>(kLongestShownText)) return;
    DynString tail = text.Right(kLongestShownText);
    const int lineFeed = tail.Find("\n");
    text = lineFeed >= 0 ? tail.Mid(lineFeed + 1) : tail;
  }

  SubtitleTrack& track_;
  int32_t begin_ = -1;
  int32_t end_ = 0;
};

// The file's bytes, NUL-terminated; false when they cannot be read whole.
bool ReadWholeFile(StdFile& file, std::vector<char>* bytes) {
  if (file.Seek(0, SEEK_END) != 0) return false;
  const long length = file.Tell();
  if (length < 0 || file.Seek(0, SEEK_SET) != 0) return false;
  bytes->assign(static_cast<std::size_t>(length) + 1, '\0');
  return file.Read(bytes->data(), 1, static_cast<std::size_t>(length)) ==
         static_cast<std::size_t>(length);
}

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
  std::vector<char> bytes;
  if (!ReadWholeFile(file, &bytes)) return -1;
  const bool hasBom = std::strncmp(bytes.data(), kUtf8Bom, 3) == 0;
  RealTextHandler handler(track);
  handler.Parse(bytes.data() + (hasBom ? 3 : 0));
  handler.Flush();
  return FinishReading(track, file, CleanUp::kSortCloseOpenEndsAndRemoveEmpty);
}

}  // namespace korvalin
