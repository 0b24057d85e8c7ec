#include "subtitles/start_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalin {

// Why this is exact: in the first pass, the inner loop for position i leaves at i the
// smallest start of positions i.. (each swap takes a strictly smaller one), so one pass
// sorts and the second swaps nothing. At step i, once position i holds the smallest
// remaining start (known from a sorted copy of the starts), no later swap can happen at i,
// so the scan stops there. An ordered file therefore costs one linear check. When no two
// starts are equal the order is unique and any sort gives it.
void SortEntriesByStart(PtrArray<SubtitleEntry>& entries) {
  const std::size_t n = entries.Count();
  auto start = [&entries](std::size_t i) { return entries[i]->start; };
  bool ordered = true;
  for (std::size_t i = 1; i < n && ordered; ++i) ordered = start(i - 1) <= start(i);
  if (ordered) return;

  std::vector<int32_t> sorted(n);
  for (std::size_t i = 0; i < n; ++i) sorted[i] = start(i);
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end()) {
    std::sort(entries.begin(), entries.end(),
              [](const SubtitleEntry* a, const SubtitleEntry* b) { return a->start < b->start; });
    return;
  }
  for (std::size_t i = 0; i + 1 < n; ++i) {
    for (std::size_t j = i + 1; j < n && start(i) > sorted[i]; ++j) {
      if (start(i) > start(j)) entries.Swap(i, j);
    }
  }
}

}  // namespace korvalin
