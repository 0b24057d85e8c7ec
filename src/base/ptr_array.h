#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace korvalin {

// An array of object pointers that does not own them. Growing to hold n pointers sets the
// capacity to trunc(1.5 * (n + 1)).
template <class T>
class PtrArray {
 public:
  PtrArray() = default;
  explicit PtrArray(std::size_t capacity) { Reserve(capacity); }
  PtrArray(const PtrArray&) = delete;
  PtrArray& operator=(const PtrArray&) = delete;
  virtual ~PtrArray() = default;

  // Frees the storage; the owning form destroys the objects first.
  virtual void Clear() {
    data_.reset();
    count_ = 0;
    capacity_ = 0;
  }
  // Destroys the object at index in the owning form and leaves its slot dangling-free (null);
  // does nothing here. Callers that remove the slot use RemoveAt.
  virtual void DeleteAt(std::size_t) {}

  void Reserve(std::size_t n) {
    if (n <= capacity_) return;
    const std::size_t capacity = (3 * (n + 1)) / 2;
    auto grown = std::make_unique<T*[]>(capacity);
    for (std::size_t i = 0; i < count_; ++i) grown[i] = data_[i];
    data_ = std::move(grown);
    capacity_ = capacity;
  }
  void Add(T* item) {
    if (count_ + 1 > capacity_) Reserve(count_ + 1);
    data_[count_++] = item;
  }
  // DeleteAt, then moves the later pointers down by one, keeping their order.
  void RemoveAt(std::size_t index) {
    DeleteAt(index);
    for (std::size_t i = index + 1; i < count_; ++i) data_[i - 1] = data_[i];
    --count_;
  }
  // Drops every slot from count on (their objects must already be gone or owned elsewhere).
  void Truncate(std::size_t count) {
    if (count < count_) count_ = count;
  }

  void Swap(std::size_t a, std::size_t b) { std::swap(data_[a], data_[b]); }

  std::size_t Count() const { return count_; }
  std::size_t Capacity() const { return capacity_; }
  bool IsEmpty() const { return count_ == 0; }
  T* operator[](std::size_t index) const { return data_[index]; }
  T** begin() { return data_.get(); }
  T** end() { return data_.get() + count_; }
  T* const* begin() const { return data_.get(); }
  T* const* end() const { return data_.get() + count_; }

 protected:
  T*& Slot(std::size_t index) { return data_[index]; }

 private:
  std::unique_ptr<T*[]> data_;
  std::size_t count_ = 0;
  std::size_t capacity_ = 0;
};

// The owning form: every pointer added is owned and destroyed by the array.
template <class T>
class OwningPtrArray : public PtrArray<T> {
 public:
  using PtrArray<T>::PtrArray;
  ~OwningPtrArray() override { Clear(); }

  void Clear() override {
    for (std::size_t i = 0; i < this->Count(); ++i) DeleteAt(i);
    PtrArray<T>::Clear();
  }
  void DeleteAt(std::size_t index) override {
    std::unique_ptr<T> owned(this->Slot(index));
    this->Slot(index) = nullptr;
  }
  void Add(std::unique_ptr<T> item) { PtrArray<T>::Add(item.release()); }
  // Keeps the first count objects and destroys the rest.
  void Shrink(std::size_t count) {
    for (std::size_t i = count; i < this->Count(); ++i) DeleteAt(i);
    this->Truncate(count);
  }
};

}  // namespace korvalin
