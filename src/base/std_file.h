#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>

namespace korvalin {

// A thin file object over a C stdio stream. The line readers read through the virtual Read,
// so a subclass may supply bytes from elsewhere.
//
// Mode "rt" reads as Windows text mode does: a carriage return followed by a line feed reads
// as the line feed alone, a lone carriage return stays. Any mode without 't' reads the bytes
// as they are.
class StdFile {
 public:
  StdFile() = default;
  StdFile(const StdFile&) = delete;
  StdFile& operator=(const StdFile&) = delete;
  virtual ~StdFile();

  // Element counts as fread / fwrite.
  virtual std::size_t Read(void* buffer, std::size_t size, std::size_t count);
  virtual std::size_t Write(const void* buffer, std::size_t size, std::size_t count);
  // 0 on success, as fseek.
  virtual int Seek(long offset, int origin);
  virtual long Tell();
  // Non-zero once the end of the stream was met.
  virtual int IsEof();

  // Closes any open stream first. 0 on success, 1 on failure.
  int Open(const char* path, const char* mode);
  // Reads from a copy of size bytes of memory instead of a file; same modes as Open.
  int OpenMemory(const void* data, std::size_t size, const char* mode);
  int Close();
  // 0 if a byte was read into *byte, -1 otherwise.
  int ReadByte(char* byte);

  bool IsOpen() const { return stream_ != nullptr; }

 private:
  std::size_t ReadText(unsigned char* out, std::size_t bytes);
  void Adopt(std::FILE* stream, const char* mode);

  std::FILE* stream_ = nullptr;
  bool textMode_ = false;
  std::unique_ptr<char[]> memory_;  // backing of OpenMemory; fmemopen keeps no copy
};

}  // namespace korvalin
