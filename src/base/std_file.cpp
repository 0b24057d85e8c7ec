#include "base/std_file.h"

#include <cstring>
#include <memory>
#include <utility>

namespace korvalin {
namespace {

// The stdio mode without 't', which C's fopen does not define.
std::unique_ptr<char[]> NativeMode(const char* mode, bool* text) {
  const std::size_t length = std::strlen(mode);
  auto native = std::make_unique<char[]>(length + 1);
  std::size_t n = 0;
  *text = false;
  for (std::size_t i = 0; i < length; ++i) {
    if (mode[i] == 't') {
      *text = true;
    } else {
      native[n++] = mode[i];
    }
  }
  native[n] = '\0';
  return native;
}

}  // namespace

StdFile::~StdFile() { Close(); }

std::size_t StdFile::Read(void* buffer, std::size_t size, std::size_t count) {
  if (!stream_ || size == 0 || count == 0) return 0;
  if (textMode_) return ReadText(static_cast<unsigned char*>(buffer), size * count) / size;
  if (size * count == 1) {  // the line readers' case: getc is far cheaper than fread
    const int c = std::getc(stream_);
    if (c == EOF) return 0;
    *static_cast<unsigned char*>(buffer) = static_cast<unsigned char>(c);
    return 1;
  }
  return std::fread(buffer, size, count, stream_);
}

std::size_t StdFile::ReadText(unsigned char* out, std::size_t bytes) {
  std::size_t n = 0;
  while (n < bytes) {
    int c = std::getc(stream_);
    if (c == EOF) break;
    if (c == '\r') {
      const int next = std::getc(stream_);
      if (next == '\n') {
        c = '\n';
      } else if (next != EOF) {
        std::ungetc(next, stream_);
      }
    }
    out[n++] = static_cast<unsigned char>(c);
  }
  return n;
}

std::size_t StdFile::Write(const void* buffer, std::size_t size, std::size_t count) {
  return stream_ ? std::fwrite(buffer, size, count, stream_) : 0;
}

int StdFile::Seek(long offset, int origin) {
  return stream_ ? std::fseek(stream_, offset, origin) : -1;
}

long StdFile::Tell() { return stream_ ? std::ftell(stream_) : -1; }

int StdFile::IsEof() { return stream_ ? std::feof(stream_) : 1; }

int StdFile::Open(const char* path, const char* mode) {
  Close();
  if (!path || !mode) return 1;
  bool text = false;
  const auto native = NativeMode(mode, &text);
  std::FILE* stream = std::fopen(path, native.get());
  if (!stream) return 1;
  Adopt(stream, mode);
  return 0;
}

int StdFile::OpenMemory(const void* data, std::size_t size, const char* mode) {
  Close();
  if (!mode) return 1;
  bool text = false;
  const auto native = NativeMode(mode, &text);
  // fmemopen refuses a zero-sized buffer; one spare byte keeps an empty input openable.
  auto copy = std::make_unique<char[]>(size + 1);
  if (size > 0) std::memcpy(copy.get(), data, size);
  std::FILE* stream =
      size > 0 ? fmemopen(copy.get(), size, native.get()) : fmemopen(copy.get(), 1, "w+");
  if (!stream) return 1;
  memory_ = std::move(copy);
  Adopt(stream, mode);
  return 0;
}

void StdFile::Adopt(std::FILE* stream, const char* mode) {
  stream_ = stream;
  textMode_ = std::strchr(mode, 't') != nullptr;
}

int StdFile::Close() {
  if (stream_) std::fclose(stream_);
  stream_ = nullptr;
  textMode_ = false;
  memory_.reset();
  return 0;
}

int StdFile::ReadByte(char* byte) { return Read(byte, 1, 1) == 1 ? 0 : -1; }

}  // namespace korvalin
