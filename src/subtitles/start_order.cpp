#include "subtitles/start_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

// The slots of a sequence of n, filled one by one (a Fenwick tree over free slots).
class FreeSlots {
 public:
  explicit FreeSlots(std::size_t n) : tree_(n + 1, 0) {
    for (std::size_t i = 1; i <= n; ++i) {
      tree_[i] += 1;
      const std::size_t parent = i + (i & (~i + 1));
      if (parent <= n) tree_[parent] += tree_[i];
    }
    while (top_ * 2 <= n) top_ *= 2;
  }
  // Takes the free slot with rank free slots before it, and returns it.
  std::size_t Take(std::size_t rank) {
    std::size_t position = 0;
    for (std::size_t step = top_; step > 0; step /= 2) {
      if (position + step < tree_.size() && tree_[position + step] <= rank) {
        position += step;
        rank -= tree_[position];
      }
    }
    for (std::size_t i = position + 1; i < tree_.size(); i += i & (~i + 1)) --tree_[i];
    return position;
  }

 private:
  std::vector<std::size_t> tree_;
  std::size_t top_ = 1;
};

// The order a sequence ends in when item k was inserted at position at[k] of the first k
// items: the last one inserted keeps its position, each earlier one takes the free slot its
// position counts to. O(n log n), where inserting into an array would be O(n^2).
std::vector<std::size_t> OrderAfterInsertions(const std::vector<std::size_t>& at) {
  std::vector<std::size_t> order(at.size());
  FreeSlots slots(at.size());
  for (std::size_t k = at.size(); k-- > 0;) order[slots.Take(at[k])] = k;
  return order;
}

}  // namespace

// How the exchange sort orders equal starts. In its first pass the inner loop for position i
// carries the smallest start seen so far and drops the one it replaces where it found the
// smaller one, so one pass sorts (the second only confirms). Looking only at the entries of
// start v and the entries below v, that pass turns out to do this to the v entries: walking
// the original order, each v entry joins the back of a queue, and each entry below v met
// after the first v entry moves the queue's front entry to its back. The queue is their final
// order. Counting the smaller entries between two v entries (the counter above) gives each
// rotation at once. The queue is kept as a sequence read from a head position: a rotation
// moves the head, joining the back inserts just before the head, and the insertions are
// placed at the end (OrderAfterInsertions). O(n log n) in all; an ordered file costs one
// linear check.
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
  std::vector<std::size_t> insertedAt;
  for (std::size_t first = 0; first < n;) {
    const int32_t start = slots[byStart[first]]->start;
    std::size_t end = first;
    while (end < n && slots[byStart[end]]->start == start) ++end;
    insertedAt.clear();
    std::size_t head = 0;
    std::size_t below = smaller.Below(byStart[first]);  // smaller entries before entry k
    for (std::size_t k = first; k < end; ++k) {
      const std::size_t size = k - first + 1;
      insertedAt.push_back(head);  // joins the back: just before the head
      head = (head + 1) % size;
      const std::size_t next = k + 1 < end ? smaller.Below(byStart[k + 1]) : smaller.Total();
      head = (head + (next - below) % size) % size;
      below = next;
    }
    const std::vector<std::size_t> order = OrderAfterInsertions(insertedAt);
    for (std::size_t i = 0; i < order.size(); ++i) {
      result.push_back(slots[byStart[first + order[(head + i) % order.size()]]]);
    }
    for (std::size_t k = first; k < end; ++k) smaller.Mark(byStart[k]);
    first = end;
  }
  std::copy(result.begin(), result.end(), slots);
}

}  // namespace korvalin
