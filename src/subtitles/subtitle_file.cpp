#include "subtitles/subtitle_file.h"

#include <cstdio>
#include <cstring>

namespace korvalin {

int OpenSubtitleFile(StdFile& file, const char* path, const char* mode) {
  if (file.Open(path, mode) != 0) return 1;
  if (!std::strchr(mode, 't')) return 0;
  static constexpr unsigned char kBom[3] = {0xEF, 0xBB, 0xBF};
  unsigned char head[3] = {};
  if (file.Read(head, 1, 3) != 3 || std::memcmp(head, kBom, 3) != 0) file.Seek(0, SEEK_SET);
  return 0;
}

}  // namespace korvalin
