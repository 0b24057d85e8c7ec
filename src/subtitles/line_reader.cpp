#include "subtitles/line_reader.h"

#include <cstring>

namespace korvalin {

int ReadLine(StdFile& file, char* buffer, std::size_t size) {
  std::size_t stored = 0;
  char byte = 0;
  while (stored + 1 < size && file.Read(&byte, 1, 1) == 1 && byte != '\0') {
    buffer[stored++] = byte;
    if (byte == '\n') break;
  }
  buffer[stored] = '\0';
  return stored == 0 ? 1 : 0;
}

int ReadLineString(StdFile& file, DynString& line) {
  line.Assign("");
  char byte = 0;
  while (file.Read(&byte, 1, 1) == 1 && byte != '\0') {
    line.AppendChar(byte);
    if (byte == '\n') break;
  }
  return line.IsEmpty() ? 1 : 0;
}

void RemoveLineFeed(char* line) {
  const std::size_t length = std::strlen(line);
  if (length > 0 && line[length - 1] == '\n') line[length - 1] = '\0';
}

void RemoveLineFeed(DynString& line) {
  const std::size_t length = line.Length();
  if (length > 0 && line.c_str()[length - 1] == '\n') line.Truncate(length - 1);
}

}  // namespace korvalin
