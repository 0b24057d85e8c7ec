#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/dyn_string.h"
#include "base/ptr_array.h"
#include "render/subtitle_renderer.h"
#include "subtitles/subtitle_entry.h"

namespace korvalin {

// A copy of the descriptive fields of a track, for the user interface.
struct SubtitleInfo {
  int32_t fileDelay = 0;
  DynString fileName;
  DynString formatName;
  int32_t streamIndex = 0;
  std::vector<DynString> streamNames;
};

// The subtitles of the loaded file, facts about that file, and the renderer that draws the
// entry on screen. Readers fill it; the per-frame path asks it which entry to show.
class SubtitleTrack {
 public:
  // renderer may be null for a track that is only searched, never drawn.
  explicit SubtitleTrack(std::unique_ptr<SubtitleRenderer> renderer = nullptr);
  SubtitleTrack(const SubtitleTrack&) = delete;
  SubtitleTrack& operator=(const SubtitleTrack&) = delete;
  virtual ~SubtitleTrack();

  // Empties the track; preferredLanguage stays. Returns 0.
  int Reset();
  // Appends without ordering or checks; the track owns the entry from now on.
  void AddEntry(std::unique_ptr<SubtitleEntry> entry);
  // Orders by start exactly as repeated exchange passes would (see the .cpp), entries with
  // equal start included.
  void SortByStart();
  // Entries without a stop end 1 ms before the next starts; the last one never ends.
  void CloseOpenEnds();
  // Drops entries that cannot be shown: start >= stop, empty text, picture without pixels.
  void RemoveEmpty();
  // Turns frame numbers into ms once, when framesPending is set and fps > 0.
  void ConvertFramesToMs(float fps);
  // The index of the entry to show for the closed interval [t1, t2] (ms), or -1.
  int32_t FindEntry(int32_t t1, int32_t t2);
  // -1 nothing to show, 0 drawn anew, 1 same entry as the previous frame.
  int32_t UpdateForFrame(int32_t t1, int32_t t2, int32_t frameWidth);
  SubtitleInfo GetInfo() const;
  // The markup its text entries are drawn with, which the format decides.
  TextMarkup textMarkup() const;

  SubtitleRenderer* renderer() const { return renderer_.get(); }

  int32_t fileDelay = 0;
  DynString fileName;
  DynString formatName;
  int32_t streamIndex = 0;
  OwningPtrArray<DynString> streamNames;
  OwningPtrArray<SubtitleEntry> entries;
  int32_t currentIndex = -1;
  int32_t displayState = -1;
  bool framesPending = false;
  DynString preferredLanguage;

 private:
  bool Matches(const SubtitleEntry& entry, int32_t t1, int32_t t2) const {
    return entry.start <= t2 && entry.stop >= t1;
  }
  int32_t SearchFromCurrent(int32_t t1, int32_t t2, bool* decided) const;
  int32_t BinarySearch(int32_t t1, int32_t t2) const;
  int32_t Draw(const SubtitleEntry& entry, int32_t frameWidth);

  std::unique_ptr<SubtitleRenderer> renderer_;
};

}  // namespace korvalin
