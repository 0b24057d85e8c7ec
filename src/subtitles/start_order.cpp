#include "subtitles/start_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
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
  SubtitleEntry** slots = entries.begin();
  bool ordered = true;
  for (std::size_t i = 1; i < n && ordered; ++i) ordered = slots[i - 1]->start <= slots[i]->start;
  if (ordered) return;

  std::vector<int32_t> sorted(n);
  for (std::size_t i = 0; i < n; ++i) sorted[i] = slots[i]->start;
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end()) {
    std::sort(slots, slots + n,
              [](const SubtitleEntry* a, const SubtitleEntry* b) { return a->start < b->start; });
    return;
  }
  // The exchange passes run on a compact copy of (start, entry) pairs, which keeps the scans
  // in cache; the entries follow the final order.
  struct Item {
    int32_t start;
    SubtitleEntry* entry;
  };
  std::vector<Item> items(n);
  for (std::size_t i = 0; i < n; ++i) items[i] = {slots[i]->start, slots[i]};
  for (std::size_t i = 0; i + 1 < n; ++i) {
    Item head = items[i];
    for (std::size_t j = i + 1; j < n && head.start > sorted[i]; ++j) {
      if (head.start > items[j].start) std::swap(head, items[j]);
    }
    items[i] = head;
  }
  for (std::size_t i = 0; i < n; ++i) slots[i] = items[i].entry;
}

}  // namespace korvalin
