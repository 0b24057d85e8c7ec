#include "subtitles/readers/ssa_reader.h"

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "base/number_scan.h"
#include "render/picture.h"
#include "subtitles/byte_budget.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/shared_bitmaps.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

constexpr std::size_t kLineSize = 2048;
constexpr std::string_view kTimerKey = "Timer: ";
constexpr std::string_view kScriptTypeKey = "ScriptType: ";
constexpr std::string_view kDialogueKey = "Dialogue:";
constexpr std::string_view kPictureKey = "Picture:";
// Commas before the text of an event line: version 3 scripts and scripts that do not say,
// and version 4 scripts (which add a field).
constexpr int kVersion3Fields = 8;
constexpr int kVersion4Fields = 9;
constexpr int kMaxFields = kVersion4Fields;

// An event line cut at its commas: start, stop and the last field, which keeps any commas.
struct EventFields {
  int32_t start = 0;
  int32_t stop = 0;
  const char* last = nullptr;
};

class SsaParser {
 public:
  SsaParser(SubtitleTrack& track, StdFile& file, std::size_t pictureByteLimit)
      : track_(track),
        input_(file, kLineSize),
        bitmaps_([](const std::string& name) { return FindNamedFile(name.c_str()); },
                 pictureByteLimit) {}

  // 0 at the normal end of the file, -1 at the first line that breaks the script.
  int ReadLines() {
    while (input_.Next()) {
      if (ReadLine(input_.line()) != 0) return -1;
    }
    return 0;
  }

 private:
  int ReadLine(char* line) {
    if (StartsWithNoCase(line, kTimerKey)) {
      float timer = 0;
      if (ScanFloat(line + kTimerKey.size(), &timer) && timer > 0) timer_ = timer;
      return 0;
    }
    if (StartsWithNoCase(line, kScriptTypeKey)) return ReadScriptType(line + kScriptTypeKey.size());
    const bool dialogue = StartsWithNoCase(line, kDialogueKey);
    if (!dialogue && !StartsWithNoCase(line, kPictureKey)) return 0;
    EventFields fields;
    if (!SplitEvent(line, &fields)) return -1;
    if (dialogue) {
      AddText(fields);
      return 0;
    }
    return AddPicture(fields);
  }

  int ReadScriptType(const char* version) {
    if (StartsWithNoCase(version, "v3.")) {
      fieldCount_ = kVersion3Fields;
    } else if (StartsWithNoCase(version, "v4.")) {
      fieldCount_ = kVersion4Fields;
    } else {
      return -1;
    }
    return 0;
  }

  bool SplitEvent(char* line, EventFields* fields) const {
    std::array<char*, kMaxFields + 1> starts{};
    starts[0] = line;
    for (int k = 1; k <= fieldCount_; ++k) {
      char* comma = std::strchr(starts[k - 1], ',');
      if (!comma) return false;
      *comma = '\0';
      starts[k] = comma + 1;
    }
    fields->start = ScanDotCentisTime(starts[1]);
    fields->stop = ScanDotCentisTime(starts[2]);
    if (fields->start == -1 || fields->stop == -1) return false;
    fields->start = Stretch(fields->start);
    fields->stop = Stretch(fields->stop);
    fields->last = starts[fieldCount_];
    return true;
  }

  // time x timer / 100, truncated toward zero and kept within 32 bits.
  int32_t Stretch(int32_t time) const {
    const double stretched = std::trunc(static_cast<double>(time) * timer_ / 100.0);
    if (std::isnan(stretched)) return 0;
    if (stretched >= 2147483647.0) return 2147483647;
    if (stretched <= -2147483648.0) return -2147483647 - 1;
    return static_cast<int32_t>(stretched);
  }

  void AddText(const EventFields& fields) {
    DynString text(fields.last);
    text.Replace("\\n", "\n", DynString::kReplaceAll);
    text.Replace("\\N", "\n", DynString::kReplaceAll);
    RemoveBraceGroups(text);
    // With eight fields a version 4 line's empty effect field leaves a comma in front.
    std::size_t commas = 0;
    while (text.c_str()[commas] == ',') ++commas;
    track_.AddEntry(
        std::make_unique<SubtitleEntry>(fields.start, fields.stop, text.c_str() + commas));
  }

  // Kept even when the bitmap does not load: the entry then simply draws nothing. -1 once
  // the script's bitmaps exceed what a track may hold.
  int AddPicture(const EventFields& fields) {
    std::shared_ptr<const Picture> picture = bitmaps_.Get(fields.last);
    if (bitmaps_.Exceeded()) return -1;
    track_.AddEntry(std::make_unique<SubtitleEntry>(fields.start, fields.stop, std::move(picture)));
    return 0;
  }

  SubtitleTrack& track_;
  LineInput input_;
  SharedBitmaps bitmaps_;
  int fieldCount_ = kVersion3Fields;
  float timer_ = 100.0f;
};

}  // namespace

int ReadSubStationAlpha(SubtitleTrack& track, const char* path) {
  return ReadSubStationAlpha(track, path, kTrackPictureByteLimit);
}

int ReadSubStationAlpha(SubtitleTrack& track, const char* path, std::size_t pictureByteLimit) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "Sub Station Alpha") != 0) return -1;
  SsaParser parser(track, file, pictureByteLimit);
  if (parser.ReadLines() != 0) return -1;
  return FinishReading(track, file, CleanUp::kSort);
}

}  // namespace korvalin
