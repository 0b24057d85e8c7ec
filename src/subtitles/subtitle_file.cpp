#include "subtitles/subtitle_file.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "text/wide_text.h"

namespace korvalin {
namespace {

bool ReadFileBytes(const char* path, std::string* bytes) {
  StdFile file;
  return file.Open(path, "rb") == 0 && ReadWholeFile(file, bytes);
}

// UTF-16 and UTF-32 text as UTF-8 without its mark; other bytes stay as they are.
void WideTextToUtf8InPlace(std::string* bytes) {
  const ByteOrderMark mark = FindByteOrderMark(*bytes);
  if (!IsWideEncoding(mark.encoding)) return;
  *bytes = WideTextToUtf8(std::string_view(*bytes).substr(mark.length), mark.encoding);
}

}  // namespace

bool ReadWholeFile(StdFile& file, std::string* bytes) {
  if (file.Seek(0, SEEK_END) != 0) return false;
  const long length = file.Tell();
  if (length < 0 || file.Seek(0, SEEK_SET) != 0) return false;
  bytes->resize(static_cast<std::size_t>(length));
  return file.Read(bytes->data(), 1, bytes->size()) == bytes->size();
}

int OpenSubtitleFile(StdFile& file, const char* path, const char* mode) {
  if (!mode || file.Open(path, mode) != 0) return 1;
  char head[4];
  const ByteOrderMark mark = FindByteOrderMark(std::string_view(head, file.Read(head, 1, 4)));
  if (IsWideEncoding(mark.encoding)) {
    // Read again in binary mode: text mode would join a 0D 0A pair inside a code unit.
    std::string text;
    if (!ReadFileBytes(path, &text)) return 1;
    WideTextToUtf8InPlace(&text);
    return file.OpenMemory(text.data(), text.size(), mode) == 0 ? 0 : 1;
  }
  const bool skipMark = mark.encoding == TextEncoding::kUtf8 && std::strchr(mode, 't');
  file.Seek(skipMark ? static_cast<long>(mark.length) : 0, SEEK_SET);
  return 0;
}

bool ReadSubtitleText(const char* path, std::string* bytes) {
  if (!path || !ReadFileBytes(path, bytes)) return false;
  WideTextToUtf8InPlace(bytes);
  return true;
}

}  // namespace korvalin
