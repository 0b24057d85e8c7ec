#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvalin::platform {

// How a stretch of text is drawn; the default is the drawing's own font and colour.
struct TextStyle {
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
  std::optional<uint32_t> colour;  // 0x00BBGGRR drawn instead of the drawing's colour

  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

// The code points from the previous run's end (or the text's start) up to `end`, in one style.
struct TextRun {
  std::size_t end = 0;
  TextStyle style;
};

// A text and its styles. Runs are in order; code points past the last run are drawn in the
// default style, so a text without runs is plain.
struct StyledText {
  std::u32string text;
  std::vector<TextRun> runs;
};

// The style of each code point in turn, for indexes that never decrease.
class StyleCursor {
 public:
  explicit StyleCursor(const std::vector<TextRun>& runs) : runs_(runs) {}
  TextStyle At(std::size_t index) {
    while (run_ < runs_.size() && runs_[run_].end <= index) ++run_;
    return run_ < runs_.size() ? runs_[run_].style : TextStyle{};
  }

 private:
  const std::vector<TextRun>& runs_;
  std::size_t run_ = 0;
};

}  // namespace korvalin::platform
