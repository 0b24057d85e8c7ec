#pragma once

#include <cstdint>
#include <functional>

#include "base/dyn_string.h"
#include "render/text_renderer.h"

namespace korvalin {

struct TimeOfDay {
  int32_t hour = 0;  // 0..23
  int32_t minute = 0;
};

// The local time of day now.
TimeOfDay LocalTimeOfDay();

// The clock's text: the video time (mode 1 elapsed, 2 remaining, 0 none) as "h:mm:ss",
// then on a second line the time of day as "%2d:%02d", trimmed at both ends.
DynString ClockText(int32_t videoTimeMode, int32_t worldTime, int32_t startMs, int32_t durationMs,
                    TimeOfDay now);

// The on-screen clock: composes its text every frame and draws it only when the text or the
// style changed.
class ClockOverlay {
 public:
  using TimeSource = std::function<TimeOfDay()>;

  ClockOverlay();
  // For tests: the time of day comes from timeSource instead of the system clock.
  explicit ClockOverlay(TimeSource timeSource);
  virtual ~ClockOverlay() = default;

  // Video time mode (0 off, 1 elapsed, 2 remaining) and whether the time of day shows.
  int SetModes(int32_t videoTimeMode, int32_t worldTime);
  // -1 when there is nothing to show, 0 when a new image was drawn, 1 when the image from
  // before still holds; a failed drawing also gives -1. stopMs is not used.
  int UpdateClock(int32_t startMs, int32_t stopMs, int32_t drawingWidth);

  TextRenderer renderer{360, 288};  // grows in proportion above a drawing width of 360
  DynString lastText;
  int32_t videoTimeMode = 0;
  int32_t worldTime = 0;
  int32_t durationMs = 0;  // length of the video, 0 when unknown; set by the filter

 private:
  TimeSource timeSource_;
};

}  // namespace korvalin
