#pragma once

#include <cstddef>
#include <limits>

#include "base/std_file.h"

namespace korvalin {

// A file whose reads, over its whole use, stop at a fixed number of bytes: a reader that may
// be sent back and forth over a file by the file's own content (offsets, links) reads it a
// bounded number of times over, whatever the content says. Once the limit is met every read
// returns nothing and LimitReached tells why.
class LimitedReadFile : public StdFile {
 public:
  // Bytes that may still be read from now on; without a limit set, reads are not limited.
  void SetReadLimit(std::size_t bytes) { left_ = bytes; }
  bool LimitReached() const { return reached_; }

  std::size_t Read(void* buffer, std::size_t size, std::size_t count) override;

 private:
  std::size_t left_ = std::numeric_limits<std::size_t>::max();
  bool reached_ = false;
};

}  // namespace korvalin
