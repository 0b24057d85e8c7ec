// Loading files built to make a reader hang or exhaust memory, each about 10 MB at most: SAMI
// with 1.7 million unclosed comments, 1.5 million unclosed STYLE blocks, one 10 MB caption of
// entities (named, and numeric references without ";") or 100,000 classes; a VobSub index of
// 100,000 stamps at one unit; a 4096 x 4096 unit smoothed and scaled to 200%; 1,000 Sub
// Station Alpha picture events naming one large bitmap; RealText with 100,000 time tags in
// reverse order; and a few shapes found while bounding the readers. Each load runs in a child
// process of its own, so that its time (manual time) and its peak memory (counter peak_MB, the
// child's maximum resident set) are its alone; a load that runs past a minute is stopped and
// reported as an error.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "../tests/subtitles/attack_files.h"
#include "subtitles/subtitle_loader.h"
#include "subtitles/subtitle_track.h"

namespace korvalin {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kChildSeconds = 60;

// A temporary folder for one case's files, removed at exit.
class Folder {
 public:
  Folder() {
    path_ = fs::temp_directory_path() /
            ("korvalin-bench-attack-" + std::to_string(std::random_device()()));
    fs::create_directories(path_);
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path_ / name, std::ios::binary) << bytes;
    return (path_ / name).string();
  }

 private:
  fs::path path_;
};

// Writes a case's files into the folder and returns the path to load.
using WriteAttack = std::string (*)(const Folder&);

std::string SamiComments(const Folder& f) {
  return f.Write("comments.smi", testing::SamiUnclosedComments(1700000));
}
std::string SamiStyles(const Folder& f) {
  return f.Write("styles.smi", testing::SamiUnclosedStyles(1500000));
}
std::string SamiNamedEntities(const Folder& f) {
  return f.Write("named.smi", testing::SamiEntityCaption(1650000, "&nbsp;"));
}
std::string SamiNumericReferences(const Folder& f) {
  return f.Write("numeric.smi", testing::SamiEntityCaption(3300000, "&#1"));
}
std::string SamiClasses(const Folder& f) {
  return f.Write("classes.smi", testing::SamiClasses(100000));
}
std::string VobSubStamps(const Folder& f) {
  const testing::VobSubFiles files = testing::VobSubStampsAtOneUnit(100000);
  f.Write("stamps.idx", files.idx);
  return f.Write("stamps.sub", files.sub);
}
std::string VobSubLargeUnit(const Folder& f) {
  const testing::VobSubFiles files =
      testing::VobSubLargeUnit(4096, "smooth: ON\nscale: 200%, 200%\n");
  f.Write("large.idx", files.idx);
  return f.Write("large.sub", files.sub);
}
std::string SsaOneBitmap(const Folder& f) {
  const std::string bitmap = f.Write("big.bmp", testing::BandedBitmap(3000, 3000));
  return f.Write("pictures.ssa", testing::SsaPictureEvents(1000, bitmap));
}
std::string RealTextReverse(const Folder& f) {
  return f.Write("reverse.rt", testing::RealTextReverseTimes(100000));
}
std::string RealTextWithoutClear(const Folder& f) {
  return f.Write("growing.rt", testing::RealTextWithoutClear(550000));
}
std::string VobSubUnitsWithoutPacks(const Folder& f) {
  const testing::VobSubFiles files = testing::VobSubUnitsWithoutTheirPacks(5000);
  f.Write("scattered.idx", files.idx);
  return f.Write("scattered.sub", files.sub);
}
std::string MicroDvdEqualStarts(const Folder& f) {
  return f.Write("equal.sub", testing::MicroDvdEqualStarts(1100, 1100));
}
std::string IniDirectoryClimbs(const Folder& f) {
  f.Write("a.srt", "1\n00:00:01,000 --> 00:00:02,000\nHi\n");
  return f.Write("climbs.ini", "[Micro DVD Ini File]\n[SUBTITLES]\nDirectory=" +
                                   testing::Repeated("x/../", 2000000) +
                                   "\n1=xxxxEnglish\nFile=a.srt\n");
}
std::string SmallSubRip(const Folder& f) {  // the baseline: what a child costs by itself
  return f.Write("small.srt", "1\n00:00:01,000 --> 00:00:02,000\nHello\n");
}

struct ChildReport {
  int result = 0;
  int64_t entries = 0;
  double seconds = 0;
};

// Loads path in a child process; false when the child did not report (killed, crashed).
bool LoadInChild(const std::string& path, ChildReport* report, long* peakKb) {
  int channel[2];
  if (pipe(channel) != 0) return false;
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    close(channel[0]);
    alarm(kChildSeconds);
    const auto begin = std::chrono::steady_clock::now();
    SubtitleTrack track;
    ChildReport out;
    out.result = LoadSubtitleFile(track, path.c_str());
    out.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    out.entries = static_cast<int64_t>(track.entries.Count());
    const bool written = write(channel[1], &out, sizeof out) == sizeof out;
    _exit(written ? 0 : 1);
  }
  close(channel[1]);
  const bool read_back = read(channel[0], report, sizeof *report) == sizeof *report;
  close(channel[0]);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  *peakKb = usage.ru_maxrss;
  return read_back && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void BM_AttackLoad(benchmark::State& state, WriteAttack write) {
  const Folder folder;
  const std::string path = write(folder);
  state.counters["file_MB"] = static_cast<double>(fs::file_size(path)) / (1 << 20);
  for (auto _ : state) {
    ChildReport report;
    long peakKb = 0;
    if (!LoadInChild(path, &report, &peakKb)) {
      state.SkipWithError("the load was stopped or crashed");
      break;
    }
    state.SetIterationTime(report.seconds);
    state.counters["peak_MB"] = static_cast<double>(peakKb) / 1024;
    state.counters["result"] = report.result;
    state.counters["entries"] = static_cast<double>(report.entries);
  }
}

#define ATTACK(name)                           \
  BENCHMARK_CAPTURE(BM_AttackLoad, name, name) \
      ->UseManualTime()                        \
      ->Iterations(1)                          \
      ->Unit(benchmark::kMillisecond)

ATTACK(SmallSubRip);
ATTACK(SamiComments);
ATTACK(SamiStyles);
ATTACK(SamiNamedEntities);
ATTACK(SamiNumericReferences);
ATTACK(SamiClasses);
ATTACK(VobSubStamps);
ATTACK(VobSubLargeUnit);
ATTACK(SsaOneBitmap);
ATTACK(RealTextReverse);
// Beyond the list: shapes found while bounding the readers.
ATTACK(RealTextWithoutClear);
ATTACK(VobSubUnitsWithoutPacks);
ATTACK(MicroDvdEqualStarts);
ATTACK(IniDirectoryClimbs);

}  // namespace
}  // namespace korvalin
