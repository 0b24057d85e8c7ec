// Loading the VobSub subtitles of a whole film: 1,500 units of two text-like lines (about
// 500 x 40 pixels each, runs of outline, fill and anti-aliasing), generated once into a
// temporary folder. Items are units, so items_per_second is units per second; bytes are
// ".sub" bytes.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "../tests/subtitles/vobsub_writer.h"
#include "subtitles/readers/vobsub_reader.h"
#include "subtitles/subtitle_track.h"

namespace korvalin {
namespace {

constexpr int kUnits = 1500;

testing::UnitSpec TextLikeUnit(std::mt19937& random) {
  testing::UnitSpec s;
  s.width = 400 + static_cast<int32_t>(random() % 200);
  s.height = 90;
  s.x1 = (720 - s.width) / 2;
  s.y1 = 460;
  s.colour = {0, 1, 2, 3};
  s.contrast = {0, 15, 15, 8};
  std::uniform_int_distribution<int32_t> run(1, 12);
  for (int32_t y = 0; y < s.height; ++y) {
    testing::Row row;
    const bool gap = y >= 40 && y < 50;  // between the two lines
    if (gap) {
      row.push_back({0, 0});
    } else {
      for (int32_t x = 0; x < s.width;) {
        const int32_t n = std::min(run(random), s.width - x);
        row.push_back({n, static_cast<int32_t>(random() % 4)});
        x += n;
      }
    }
    s.rows.push_back(row);
  }
  s.delay = 150 + static_cast<int32_t>(random() % 300);
  return s;
}

struct Film {
  std::filesystem::path folder;
  std::string subPath;
  std::size_t subBytes = 0;

  Film(const std::string& options) {
    folder = std::filesystem::temp_directory_path() /
             ("korvalin-bench-vobsub-" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(folder);
    std::mt19937 random(1234);
    testing::SubStream sub;
    std::string idx = testing::IndexHeader(6, true, options) + "id: en, index: 0\n";
    for (int i = 0; i < kUnits; ++i) {
      const int64_t at = sub.Add(TextLikeUnit(random));
      idx += testing::TimestampLine(60000 + i * 4000, at);
    }
    std::ofstream(folder / "film.idx", std::ios::binary) << idx;
    std::ofstream(folder / "film.sub", std::ios::binary) << sub.bytes();
    subPath = (folder / "film.sub").string();
    subBytes = sub.bytes().size();
  }
  ~Film() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
};

void Load(benchmark::State& state, const Film& film) {
  for (auto _ : state) {
    SubtitleTrack track;
    const int result = ReadVobSub(track, film.subPath.c_str());
    if (result != 0 || track.entries.Count() != kUnits) {
      state.SkipWithError("the generated film did not load");
      break;
    }
    benchmark::DoNotOptimize(track.entries[0]);
  }
  state.SetItemsProcessed(state.iterations() * kUnits);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(film.subBytes));
}

void BM_VobSubLoad(benchmark::State& state) {
  static const Film film("");
  Load(state, film);
}
BENCHMARK(BM_VobSubLoad)->Unit(benchmark::kMillisecond);

void BM_VobSubLoadSmoothScaled(benchmark::State& state) {
  static const Film film("smooth: ON\nscale: 50%, 50%\n");
  Load(state, film);
}
BENCHMARK(BM_VobSubLoadSmoothScaled)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace korvalin
