// Loading a large SubRip file, sorting cues into start order, and the per-frame lookup over
// a whole film.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "subtitles/readers/subrip_reader.h"
#include "subtitles/subtitle_track.h"

namespace korvalin {
namespace {

constexpr int kCues = 100000;

std::string SrtTime(int ms) {
  char text[16];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d,%03d", ms / 3600000, ms / 60000 % 60,
                ms / 1000 % 60, ms % 1000);
  return text;
}

// A generated file of kCues two-line cues, written once per process.
const std::string& LargeSubRipFile(std::size_t* bytes) {
  static std::size_t size = 0;
  static const std::string path = [] {
    const std::string file = std::filesystem::temp_directory_path().string() +
                             "/korvalin-bench-" + std::to_string(getpid()) + ".srt";
    std::string text;
    for (int i = 0; i < kCues; ++i) {
      const int start = i * 2500;
      text += std::to_string(i + 1) + "\n" + SrtTime(start) + " --> " + SrtTime(start + 2000) +
              "\nSubtitle line number " + std::to_string(i) +
              " of the film\n<i>with a second line</i>\n\n";
    }
    std::FILE* out = std::fopen(file.c_str(), "wb");
    std::fwrite(text.data(), 1, text.size(), out);
    std::fclose(out);
    size = text.size();
    return file;
  }();
  *bytes = size;
  return path;
}

void BM_LoadSubRip(benchmark::State& state) {
  std::size_t bytes = 0;
  const std::string& path = LargeSubRipFile(&bytes);
  SubtitleTrack track;
  for (auto _ : state) {
    if (ReadSubRip(track, path.c_str()) != 0) state.SkipWithError("file not read");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.SetItemsProcessed(state.iterations() * kCues);  // cues/s
}
BENCHMARK(BM_LoadSubRip)->Unit(benchmark::kMillisecond);

// Arg 0: already ordered; 1: reverse order, distinct starts; 2: reverse order in pairs of
// equal starts (the order of equal starts must then be worked out exactly); 3: rounds of
// falling starts, so that every group of equal starts has many smaller ones between its
// members.
void BM_SortByStart(benchmark::State& state) {
  constexpr int kRounds = 1000;
  const int n = static_cast<int>(state.range(1));
  for (auto _ : state) {
    state.PauseTiming();
    SubtitleTrack track;
    for (int i = 0; i < n; ++i) {
      int start = i;
      if (state.range(0) == 1) start = n - i;
      if (state.range(0) == 2) start = (n - i) / 2;
      if (state.range(0) == 3) start = kRounds - 1 - i % kRounds;
      track.AddEntry(std::make_unique<SubtitleEntry>(start * 100, start * 100 + 50, "x"));
    }
    state.ResumeTiming();
    track.SortByStart();
    state.PauseTiming();
    track.Reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_SortByStart)
    ->Args({0, kCues})
    ->Args({1, kCues})
    ->Args({2, 10000})
    ->Args({2, kCues})
    ->Args({3, 10 * kCues})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// Every frame of a two-hour film at 25 fps, with a cue of 2 s every 3 s, as the per-frame
// path asks: FindEntry, remembering the index found.
void BM_FindEntryWholeFilm(benchmark::State& state) {
  constexpr int kFrames = 2 * 3600 * 25;
  SubtitleTrack track;
  for (int start = 0; start < 2 * 3600 * 1000; start += 3000) {
    track.AddEntry(std::make_unique<SubtitleEntry>(start, start + 1999, "x"));
  }
  for (auto _ : state) {
    track.currentIndex = -1;
    int64_t shown = 0;
    for (int frame = 0; frame < kFrames; ++frame) {
      const int32_t index = track.FindEntry(frame * 40, frame * 40 + 39);
      if (index != -1) track.currentIndex = index;
      shown += index != -1;
    }
    benchmark::DoNotOptimize(shown);
  }
  state.SetItemsProcessed(state.iterations() * kFrames);  // frames/s
}
BENCHMARK(BM_FindEntryWholeFilm)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace korvalin
