#include "subtitles/subtitle_entry.h"

#include <utility>

namespace korvalin {

SubtitleEntry::SubtitleEntry(int32_t start, int32_t stop, const char* text)
    : start(start), stop(stop), kind(SubtitleEntryKind::Text), text(text ? text : "") {}

SubtitleEntry::SubtitleEntry(int32_t start, int32_t stop, std::shared_ptr<const Picture> picture)
    : start(start),
      stop(stop),
      kind(SubtitleEntryKind::Picture),
      text(""),
      picture(std::move(picture)) {}

}  // namespace korvalin
