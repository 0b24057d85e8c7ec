// Feeds arbitrary bytes to the MicroDVD-INI reader as "x.ini" in a private folder that also
// holds files an INI may name: subtitles in two formats, and "c.ini", which names x.ini back
// so that cycles are reachable.
#include "subtitles/readers/microdvd_ini_reader.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

namespace {

void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return;
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

const std::string& InputPath() {
  static const std::string path = [] {
    const auto folder =
        std::filesystem::temp_directory_path() / ("korvalin-fuzz-ini-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder / "Subs");
    WriteFile(folder / "a.sub", "{1}{1}25\n{25}{50}a|b\n");
    WriteFile(folder / "Subs" / "B.SRT", "1\n00:00:01,000 --> 00:00:02,000\nb\n");
    WriteFile(folder / "c.ini", "[Micro DVD Ini File]\n[Subtitles]\n1=Lng:Back\nFile=x.ini\n");
    return (folder / "x.ini").string();
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string& path = InputPath();
  WriteFile(path, std::string(reinterpret_cast<const char*>(data), size));

  korvalin::SubtitleTrack track;
  track.preferredLanguage.Assign("French");
  const int result = korvalin::ReadMicroDvdIni(track, path.c_str());
  if (result != 0 && result != -1) __builtin_trap();
  if (result == 0 && (track.streamIndex < 0 ||
                      static_cast<std::size_t>(track.streamIndex) >= track.streamNames.Count())) {
    __builtin_trap();
  }
  return 0;
}
