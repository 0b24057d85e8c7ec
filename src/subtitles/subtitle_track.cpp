#include "subtitles/subtitle_track.h"

#include <cmath>
#include <limits>
#include <utility>

#include "subtitles/start_order.h"

namespace korvalin {
namespace {

int32_t ClampToInt32(double value) {
  if (!(value > std::numeric_limits<int32_t>::min())) return std::numeric_limits<int32_t>::min();
  if (value >= std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(value);  // truncates toward zero
}

int32_t FramesToMs(int32_t frames, double fps) { return ClampToInt32(frames * 1000.0 / fps); }

}  // namespace

SubtitleTrack::SubtitleTrack(std::unique_ptr<SubtitleRenderer> renderer)
    : fileName(""), formatName(""), renderer_(std::move(renderer)) {}

SubtitleTrack::~SubtitleTrack() { Reset(); }

int SubtitleTrack::Reset() {
  currentIndex = -1;
  displayState = -1;
  framesPending = false;
  entries.Clear();
  fileDelay = 0;
  fileName.Assign("");
  formatName.Assign("");
  streamIndex = 0;
  streamNames.Clear();
  if (renderer_) renderer_->ClearImage();
  return 0;
}

void SubtitleTrack::AddEntry(std::unique_ptr<SubtitleEntry> entry) {
  entries.Add(std::move(entry));
}

void SubtitleTrack::SortByStart() { SortEntriesByStart(entries); }

void SubtitleTrack::CloseOpenEnds() {
  const std::size_t n = entries.Count();
  if (n == 0) return;
  if (entries[n - 1]->stop == 0) entries[n - 1]->stop = OpenEnd;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    const int32_t next_start = entries[i + 1]->start;
    if (entries[i]->stop == 0 && next_start > 0) entries[i]->stop = next_start - 1;
  }
}

void SubtitleTrack::RemoveEmpty() {
  auto shown = [](const SubtitleEntry& e) {
    if (e.start >= e.stop) return false;
    if (e.kind == SubtitleEntryKind::Text) return !e.text.IsEmpty();
    if (e.kind == SubtitleEntryKind::Picture) return e.picture && e.picture->HasPixels();
    return true;
  };
  std::size_t kept = 0;
  SubtitleEntry** slots = entries.begin();
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    if (shown(*slots[i])) {
      std::swap(slots[kept++], slots[i]);
    }
  }
  entries.Shrink(kept);
}

void SubtitleTrack::ConvertFramesToMs(float fps) {
  if (!framesPending || !(fps > 0)) return;
  for (SubtitleEntry* entry : entries) {
    entry->start = FramesToMs(entry->start, fps);
    if (entry->stop != OpenEnd) entry->stop = FramesToMs(entry->stop, fps);
  }
  framesPending = false;
}

int32_t SubtitleTrack::FindEntry(int32_t t1, int32_t t2) {
  // Computed wide and clamped so that extreme delays cannot overflow.
  t1 = ClampToInt32(static_cast<double>(t1) - fileDelay);
  t2 = ClampToInt32(static_cast<double>(t2) - fileDelay);
  if (currentIndex != -1) {
    bool decided = false;
    const int32_t index = SearchFromCurrent(t1, t2, &decided);
    if (decided) return index;
  }
  return BinarySearch(t1, t2);
}

// The common per-frame case: the previous entry, its successor, or the gap between them.
int32_t SubtitleTrack::SearchFromCurrent(int32_t t1, int32_t t2, bool* decided) const {
  const auto count = static_cast<int64_t>(entries.Count());
  const int64_t index = currentIndex;
  const SubtitleEntry* current = index >= 0 && index < count ? entries[index] : nullptr;
  const SubtitleEntry* next = index + 1 >= 0 && index + 1 < count ? entries[index + 1] : nullptr;
  *decided = true;
  if (current && Matches(*current, t1, t2)) return currentIndex;
  if (next && Matches(*next, t1, t2)) return currentIndex + 1;
  if (current && next && current->start <= t2 && next->stop >= t1) return -1;
  if (current && !next && t1 > current->stop) return -1;
  *decided = false;
  return -1;
}

int32_t SubtitleTrack::BinarySearch(int32_t t1, int32_t t2) const {
  int64_t low = 0;
  int64_t high = static_cast<int64_t>(entries.Count()) - 1;
  while (low <= high) {
    const int64_t middle = low + (high - low) / 2;
    const SubtitleEntry& entry = *entries[middle];
    if (t1 <= entry.stop) {
      if (t2 >= entry.start) return static_cast<int32_t>(middle);
      high = middle - 1;
    } else {
      low = middle + 1;
    }
  }
  return -1;
}

int32_t SubtitleTrack::UpdateForFrame(int32_t t1, int32_t t2, int32_t frameWidth) {
  if (framesPending) return displayState = -1;
  const int32_t index = FindEntry(t1, t2);
  if (index == -1) return displayState = -1;
  if (index == currentIndex) return displayState = displayState < 0 ? 0 : 1;
  currentIndex = index;
  if (renderer_) renderer_->ClearImage();
  return displayState = Draw(*entries[index], frameWidth);
}

// A track without a renderer cannot draw, which counts as a failed drawing.
int32_t SubtitleTrack::Draw(const SubtitleEntry& entry, int32_t frameWidth) {
  if (!renderer_) return -1;
  if (entry.kind == SubtitleEntryKind::Text) {
    return renderer_->RenderText(entry.text.c_str(), frameWidth, textMarkup());
  }
  if (entry.kind == SubtitleEntryKind::Picture && entry.picture) {
    return renderer_->RenderPicture(*entry.picture, frameWidth);
  }
  return -1;
}

// Only SubRip's tags are styles; every other format draws its text as it stands.
TextMarkup SubtitleTrack::textMarkup() const {
  return formatName == "SubRip" ? TextMarkup::SubRip : TextMarkup::None;
}

SubtitleInfo SubtitleTrack::GetInfo() const {
  SubtitleInfo info;
  info.fileDelay = fileDelay;
  info.fileName = fileName;
  info.formatName = formatName;
  info.streamIndex = streamIndex;
  for (const DynString* name : streamNames) info.streamNames.push_back(*name);
  return info;
}

}  // namespace korvalin
