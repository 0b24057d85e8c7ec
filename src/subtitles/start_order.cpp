#include "subtitles/start_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <numeric>
#include <vector>

namespace korvalin {
namespace {

// Counts marked positions below a bound (a Fenwick tree).
class PositionCounter {
 public:
  explicit PositionCounter(std::size_t n) : tree_(n + 1, 0) {}
  void Mark(std::size_t position) {
    for (std::size_t i = position + 1; i < tree_.size(); i += i & (~i + 1)) ++tree_[i];
    ++total_;
  }
  // Marked positions p with p < bound.
  std::size_t Below(std::size_t bound) const {
    std::size_t count = 0;
    for (std::size_t i = bound; i > 0; i -= i & (~i + 1)) count += tree_[i];
    return count;
  }
  std::size_t Total() const { return total_; }

 private:
  std::vector<std::size_t> tree_;
  std::size_t total_ = 0;
};

}  // namespace

// How the exchange sort orders equal starts. In its first pass the inner loop for position i
// carries the smallest start seen so far and drops the one it replaces where it found the
// smaller one, so one pass sorts (the second only confirms). Looking only at the entries of
// start v and the entries below v, that pass turns out to do this to the v entries: walking
// the original order, each v entry joins the back of a queue, and each entry below v met
// after the first v entry moves the queue's front entry to its back. The queue is their final
// order. Counting the smaller entries between two v entries (the counter below) and rotating
// by that count modulo the queue's length costs O(n log n) plus at most
// min(n, group size squared) per group of equal starts; an ordered file costs one linear check.
void SortEntriesByStart(PtrArray<SubtitleEntry>& entries) {
  const std::size_t n = entries.Count();
  SubtitleEntry** slots = entries.begin();
  bool ordered = true;
  for (std::size_t i = 1; i < n && ordered; ++i) ordered = slots[i - 1]->start <= slots[i]->start;
  if (ordered) return;

  std::vector<std::size_t> byStart(n);  // positions by (start, position)
  std::iota(byStart.begin(), byStart.end(), std::size_t{0});
  std::stable_sort(byStart.begin(), byStart.end(), [slots](std::size_t a, std::size_t b) {
    return slots[a]->start < slots[b]->start;
  });
  PositionCounter smaller(n);
  std::vector<SubtitleEntry*> result;
  result.reserve(n);
  std::deque<SubtitleEntry*> queue;
  for (std::size_t first = 0; first < n;) {
    const int32_t start = slots[byStart[first]]->start;
    std::size_t end = first;
    while (end < n && slots[byStart[end]]->start == start) ++end;
    for (std::size_t k = first; k < end; ++k) {
      queue.push_back(slots[byStart[k]]);
      const std::size_t next = k + 1 < end ? smaller.Below(byStart[k + 1]) : smaller.Total();
      const std::size_t turns = (next - smaller.Below(byStart[k])) % queue.size();
      for (std::size_t t = 0; t < turns; ++t) {
        queue.push_back(queue.front());
        queue.pop_front();
      }
    }
    result.insert(result.end(), queue.begin(), queue.end());
    queue.clear();
    for (std::size_t k = first; k < end; ++k) smaller.Mark(byStart[k]);
    first = end;
  }
  std::copy(result.begin(), result.end(), slots);
}

}  // namespace korvalin
