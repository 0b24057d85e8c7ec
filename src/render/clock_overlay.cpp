#include "render/clock_overlay.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

namespace korvalin {
namespace {

DynString VideoTimeLine(int32_t videoTimeMode, int32_t startMs, int32_t durationMs) {
  if (videoTimeMode == 0) return {};
  int64_t t = startMs;
  if (videoTimeMode == 2)
    t = std::min<int64_t>(int64_t{startMs} - durationMs, 0);  // past the end: 0
  const char* sign = t < 0 ? "-" : "";
  if (t < 0) t = -t;
  const int64_t s = t / 1000, m = s / 60, h = m / 60;
  char line[64];
  std::snprintf(line, sizeof line, "%s%lld:%02d:%02d", sign, static_cast<long long>(h),
                static_cast<int>(m % 60), static_cast<int>(s % 60));
  return DynString(line);
}

}  // namespace

TimeOfDay LocalTimeOfDay() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) return {};
  return {local.tm_hour, local.tm_min};
}

DynString ClockText(int32_t videoTimeMode, int32_t worldTime, int32_t startMs, int32_t durationMs,
                    TimeOfDay now) {
  DynString text = VideoTimeLine(videoTimeMode, startMs, durationMs);
  if (!text.IsEmpty()) text.AppendChar('\n');
  if (worldTime != 0) {
    char line[32];
    std::snprintf(line, sizeof line, "%2d:%02d", now.hour, now.minute);
    text.Append(line);
  }
  text.TrimRight();
  text.TrimLeft();
  return text;
}

ClockOverlay::ClockOverlay() : ClockOverlay(LocalTimeOfDay) {}

ClockOverlay::ClockOverlay(TimeSource timeSource) : timeSource_(std::move(timeSource)) {
  SetModes(0, 0);
}

int ClockOverlay::SetModes(int32_t videoTime, int32_t world) {
  videoTimeMode = videoTime;
  worldTime = world;
  return 0;
}

int ClockOverlay::UpdateClock(int32_t startMs, int32_t /*stopMs*/, int32_t drawingWidth) {
  const TimeOfDay now = worldTime != 0 ? timeSource_() : TimeOfDay{};
  DynString text = ClockText(videoTimeMode, worldTime, startMs, durationMs, now);
  if (text.IsEmpty()) {
    lastText = DynString();
    renderer.ClearImage();
    return -1;
  }
  if (text == lastText && !renderer.fontDirty()) return 1;
  renderer.ClearImage();
  lastText = std::move(text);
  return renderer.RenderText(lastText.c_str(), drawingWidth);
}

}  // namespace korvalin
