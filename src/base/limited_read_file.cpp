#include "base/limited_read_file.h"

namespace korvalin {

std::size_t LimitedReadFile::Read(void* buffer, std::size_t size, std::size_t count) {
  if (size != 0 && count > left_ / size) {
    reached_ = true;
    return 0;
  }
  const std::size_t read = StdFile::Read(buffer, size, count);
  left_ -= read * size;
  return read;
}

}  // namespace korvalin
