#pragma once

#include <cstddef>
#include <memory>

namespace korvalin {

// The system's growable 8-bit string. No buffer counts as empty; every reading operation
// treats it as "". Growing to hold n bytes (terminator included) allocates
// 20 + trunc(1.2 * n) bytes, so repeated appends stay amortised linear.
class DynString {
 public:
  // Flags of Replace: every occurrence, and repeat whole passes until nothing changes.
  static constexpr int kReplaceAll = 1;
  static constexpr int kReplaceRepeat = 2;

  DynString() = default;
  DynString(const char* text);  // NOLINT: implicit like a C string
  DynString(const char* text, std::size_t length);
  DynString(const DynString& other);
  DynString(DynString&& other) noexcept;
  DynString& operator=(const DynString& other);
  DynString& operator=(DynString&& other) noexcept;
  virtual ~DynString() = default;

  // Null frees the buffer (capacity 0); otherwise copies, growing when needed.
  virtual void Assign(const char* text);
  void Assign(const char* text, std::size_t length);

  // A null argument changes nothing.
  void Append(const char* text);
  void Append(const char* text, std::size_t length);
  void AppendChar(char c);
  void Reserve(std::size_t n);

  DynString Left(int n) const;
  DynString Right(int n) const;
  // count -1 means to the end.
  DynString Mid(int start, int count = -1) const;
  DynString Concat(const char* text) const;
  int Find(const char* needle, int start = 0) const;
  // Returns the number of replacements; flags are kReplaceAll and kReplaceRepeat.
  int Replace(const char* find, const char* replacement, int flags = 0);
  // Remove leading / trailing bytes <= 32 (space and control characters).
  void TrimLeft();
  void TrimRight();
  // Cut to the first n bytes (n not above the length).
  void Truncate(std::size_t n);

  const char* c_str() const { return data_ ? data_.get() : ""; }
  // The raw buffer, null when none was ever allocated.
  const char* data() const { return data_.get(); }
  std::size_t Length() const { return length_; }
  bool IsEmpty() const { return length_ == 0; }
  std::size_t Capacity() const { return capacity_; }

  friend bool operator==(const DynString& a, const DynString& b);
  friend bool operator==(const DynString& a, const char* b);

 private:
  // The capacity the growth rule gives for n bytes.
  static std::size_t GrownCapacity(std::size_t n) { return 20 + n + n / 5; }
  void GrowToHold(std::size_t n);
  int ReplacePass(const char* find, const char* replacement, bool all);

  std::unique_ptr<char[]> data_;
  std::size_t capacity_ = 0;
  std::size_t length_ = 0;
};

}  // namespace korvalin
