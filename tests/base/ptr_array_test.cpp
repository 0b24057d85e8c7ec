#include "base/ptr_array.h"

#include <gtest/gtest.h>

#include <memory>

namespace korvalin {
namespace {

struct Counted {
  explicit Counted(int* alive) : alive(alive) { ++*alive; }
  ~Counted() { --*alive; }
  int* alive;
};

TEST(PtrArray, GrowthIsThreeHalvesOfOneMore) {
  PtrArray<int> array;
  int value = 0;
  const std::size_t expected[] = {3, 3, 3, 7, 7, 7, 7, 13};  // after each Add
  for (std::size_t want : expected) {
    array.Add(&value);
    EXPECT_EQ(array.Capacity(), want) << array.Count();
  }
  PtrArray<int> reserved(10);
  EXPECT_EQ(reserved.Capacity(), 16u);
  array.Clear();
  EXPECT_EQ(array.Capacity(), 0u);
  EXPECT_EQ(array.Count(), 0u);
}

TEST(PtrArray, OwningFormDestroysNonOwningDoesNot) {
  int alive = 0;
  {
    OwningPtrArray<Counted> owning;
    for (int i = 0; i < 5; ++i) owning.Add(std::make_unique<Counted>(&alive));
    owning.RemoveAt(1);
    EXPECT_EQ(alive, 4);
    EXPECT_EQ(owning.Count(), 4u);
    owning.Shrink(2);
    EXPECT_EQ(alive, 2);
  }
  EXPECT_EQ(alive, 0);
  Counted kept(&alive);
  {
    PtrArray<Counted> borrowing;
    borrowing.Add(&kept);
    borrowing.RemoveAt(0);
    borrowing.Add(&kept);
  }
  EXPECT_EQ(alive, 1);
}

}  // namespace
}  // namespace korvalin
