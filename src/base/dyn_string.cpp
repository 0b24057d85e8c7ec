#include "base/dyn_string.h"

#include <cstring>
#include <utility>

#include "base/string_search.h"

namespace korvalin {
namespace {

// A repeated replacement that does not shrink the text could rewrite forever; this bounds it.
constexpr int kMaxGrowingPasses = 1000;

bool IsBlank(char c) { return static_cast<unsigned char>(c) <= 32; }

}  // namespace

DynString::DynString(const char* text) { Assign(text); }

DynString::DynString(const char* text, std::size_t length) { Assign(text, length); }

DynString::DynString(const DynString& other) {
  if (other.data_) Assign(other.data_.get(), other.length_);
}

DynString::DynString(DynString&& other) noexcept
    : data_(std::move(other.data_)),
      capacity_(std::exchange(other.capacity_, 0)),
      length_(std::exchange(other.length_, 0)) {}

DynString& DynString::operator=(const DynString& other) {
  if (this == &other) return *this;
  if (other.data_) {
    Assign(other.data_.get(), other.length_);
  } else {
    Assign(nullptr);
  }
  return *this;
}

DynString& DynString::operator=(DynString&& other) noexcept {
  data_ = std::move(other.data_);
  capacity_ = std::exchange(other.capacity_, 0);
  length_ = std::exchange(other.length_, 0);
  return *this;
}

void DynString::Assign(const char* text) {
  if (!text) {
    data_.reset();
    capacity_ = 0;
    length_ = 0;
    return;
  }
  Assign(text, std::strlen(text));
}

void DynString::Assign(const char* text, std::size_t length) {
  if (!text) {
    Assign(nullptr);
    return;
  }
  if (length + 1 > capacity_) {
    // The source may live in our own buffer; copy before the old buffer goes.
    DynString copy;
    copy.GrowToHold(length + 1);
    std::memcpy(copy.data_.get(), text, length);
    copy.data_[length] = '\0';
    copy.length_ = length;
    *this = std::move(copy);
    return;
  }
  std::memmove(data_.get(), text, length);
  data_[length] = '\0';
  length_ = length;
}

void DynString::Append(const char* text) {
  if (text) Append(text, std::strlen(text));
}

void DynString::Append(const char* text, std::size_t length) {
  if (!text) return;
  if (!data_) {
    Assign(text, length);
    return;
  }
  if (length_ + length + 1 > capacity_) {
    // Keep the source alive in case it points into our own buffer.
    std::unique_ptr<char[]> old = std::move(data_);
    const std::size_t old_capacity = capacity_;
    capacity_ = 0;
    GrowToHold(length_ + length + 1);
    std::memcpy(data_.get(), old.get(), length_);
    const bool inside = text >= old.get() && text < old.get() + old_capacity;
    std::memcpy(data_.get() + length_, inside ? data_.get() + (text - old.get()) : text, length);
  } else {
    std::memmove(data_.get() + length_, text, length);
  }
  length_ += length;
  data_[length_] = '\0';
}

void DynString::AppendChar(char c) { Append(&c, 1); }

void DynString::Reserve(std::size_t n) {
  if (n > capacity_) GrowToHold(n);
}

void DynString::GrowToHold(std::size_t n) {
  const std::size_t capacity = GrownCapacity(n);
  auto grown = std::make_unique<char[]>(capacity);
  if (data_) std::memcpy(grown.get(), data_.get(), length_ + 1);
  data_ = std::move(grown);
  capacity_ = capacity;
}

DynString DynString::Left(int n) const {
  if (n < 0) n = 0;
  if (static_cast<std::size_t>(n) >= length_) return *this;
  return DynString(c_str(), n);
}

DynString DynString::Right(int n) const {
  if (n < 0) n = 0;
  if (static_cast<std::size_t>(n) >= length_) return *this;
  return DynString(c_str() + length_ - n, n);
}

DynString DynString::Mid(int start, int count) const {
  if (start < 0) start = 0;
  if (static_cast<std::size_t>(start) >= length_) return DynString("");
  const std::size_t rest = length_ - start;
  const std::size_t n =
      (count >= 0 && static_cast<std::size_t>(count) < rest) ? static_cast<std::size_t>(count)
                                                               : rest;
  return DynString(c_str() + start, n);
}

DynString DynString::Concat(const char* text) const {
  DynString result(*this);
  result.Append(text);
  return result;
}

int DynString::Find(const char* needle, int start) const { return FindText(c_str(), needle, start); }

// One pass, building the result once so that many replacements stay linear.
int DynString::ReplacePass(const char* find, const char* replacement, bool all) {
  const std::size_t find_length = std::strlen(find);
  int count = 0;
  int copied = 0;  // text before this position is already in result
  int position = 0;
  DynString result("");
  while ((position = Find(find, position)) >= 0) {
    result.Append(c_str() + copied, position - copied);
    result.Append(replacement);
    copied = position + static_cast<int>(find_length);
    position = copied;
    ++count;
    if (!all) break;
  }
  if (count == 0) return 0;
  result.Append(c_str() + copied);
  *this = std::move(result);
  return count;
}

int DynString::Replace(const char* find, const char* replacement, int flags) {
  if (IsEmpty() || !find || !*find) return 0;
  if (!replacement) replacement = "";
  const bool all = flags & kReplaceAll;
  if (!(flags & kReplaceRepeat)) return ReplacePass(find, replacement, all);
  // A replacement holding the searched text would match again after every pass.
  if (std::strstr(replacement, find)) return ReplacePass(find, replacement, all);
  const bool shrinks = std::strlen(replacement) < std::strlen(find);
  int total = 0;
  for (int pass = 0; shrinks || pass < kMaxGrowingPasses; ++pass) {
    const int count = ReplacePass(find, replacement, all);
    if (count == 0) break;
    total += count;
  }
  return total;
}

void DynString::TrimLeft() {
  std::size_t skip = 0;
  while (skip < length_ && IsBlank(data_[skip])) ++skip;
  if (skip == 0) return;
  std::memmove(data_.get(), data_.get() + skip, length_ - skip + 1);
  length_ -= skip;
}

void DynString::TrimRight() {
  std::size_t keep = length_;
  while (keep > 0 && IsBlank(data_[keep - 1])) --keep;
  Truncate(keep);
}

void DynString::Truncate(std::size_t n) {
  if (n >= length_) return;
  length_ = n;
  data_[n] = '\0';
}

bool operator==(const DynString& a, const DynString& b) {
  return a.length_ == b.length_ && std::memcmp(a.c_str(), b.c_str(), a.length_) == 0;
}

bool operator==(const DynString& a, const char* b) {
  return std::strcmp(a.c_str(), b ? b : "") == 0;
}

}  // namespace korvalin
