// Feeds arbitrary bytes to both SubViewer readers as a file.
#include "subtitles/readers/subviewer_v1_reader.h"
#include "subtitles/readers/subviewer_v2_reader.h"

#include "reader_fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace korvalin;
  fuzz::FuzzReader(data, size, "sub", ReadSubViewer2);

  // Version 1.0 rejects nothing it can open, and keeps only entries it can show.
  const std::string path = fuzz::WriteFuzzInput(data, size, "sub");
  if (path.empty()) return 0;
  SubtitleTrack track;
  if (ReadSubViewer1(track, path.c_str()) == -1) __builtin_trap();
  for (const SubtitleEntry* entry : track.entries) {
    if (entry->start >= entry->stop || entry->text.IsEmpty()) __builtin_trap();
  }
  fuzz::LookUpAll(track);
  return 0;
}
