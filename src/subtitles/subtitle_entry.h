#pragma once

#include <cstdint>
#include <memory>

#include "base/dyn_string.h"
#include "render/picture.h"

namespace korvalin {

enum class SubtitleEntryKind : int32_t { Text = 1, Picture = 2 };

// The stop time that means "until the end of the video".
inline constexpr int32_t OpenEnd = 2147483647;

// One timed subtitle: a text or a picture shown from start to stop (ms, both inclusive).
// stop 0 means the file gave none, until CloseOpenEnds runs. Entries that show the same
// picture (VobSub time stamps of one unit, picture events naming one bitmap) share it; a
// picture never changes once an entry holds it.
class SubtitleEntry {
 public:
  // A text entry; null text gives an empty one.
  SubtitleEntry(int32_t start, int32_t stop, const char* text);
  // A picture entry; picture may be shared with other entries. Null counts as no picture.
  SubtitleEntry(int32_t start, int32_t stop, std::shared_ptr<const Picture> picture);
  virtual ~SubtitleEntry() = default;

  int32_t start;
  int32_t stop;
  SubtitleEntryKind kind;
  DynString text;
  std::shared_ptr<const Picture> picture;
};

}  // namespace korvalin
