#include <gtest/gtest.h>

#include <string>

#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::TempFolder;

constexpr const char* kMicroDvd = "{1}{1}25\n{25}{50}Hello, world|again\n";
constexpr const char* kSubRip = "1\n00:00:01,000 --> 00:00:02,000\nHello\n";
constexpr const char* kSubViewer2 =
    "[INFORMATION]\n[TITLE]Film\n[END INFORMATION]\n[SUBTITLE]\n"
    "00:00:01.00,00:00:02.00\nHello, world\n\n";
constexpr const char* kSubViewer1 = "[TITLE]\nFilm\n[00:00:01]\nHello, world\n[00:00:02]\n\n";

// Each file must pass the readers before it in its extension's row and stop at its own.
TEST(LoaderDetection, EachRowReachesTheRightReader) {
  const struct {
    const char* name;
    const char* bytes;
    const char* format;
    std::size_t entries;
  } cases[] = {
      {"md.txt", kMicroDvd, "MicroDVD", 1},
      {"md.sub", kMicroDvd, "MicroDVD", 1},
      {"md.srt", kMicroDvd, "MicroDVD", 1},
      {"srt.txt", kSubRip, "SubRip", 1},
      {"sv2.sub", kSubViewer2, "SubViewer 2.0", 1},
      {"sv2.srt", kSubViewer2, "SubViewer 2.0", 1},
      {"sv2.txt", kSubViewer2, "SubViewer 2.0", 1},
      {"sv1.sub", kSubViewer1, "SubViewer 1.0", 1},
      {"sv1.srt", kSubViewer1, "SubViewer 1.0", 1},
      {"sv1.txt", kSubViewer1, "SubViewer 1.0", 1},
      {"a.ssa", "Dialogue: 0,0:00:01.00,0:00:02.00,a,b,0,0,0,x\n", "Sub Station Alpha", 1},
      {"a.JS", "0:00:01.00 0:00:02.00 D x\n", "JACOsub", 1},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write(c.name, c.bytes);
    EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), 0) << c.name;
    EXPECT_EQ(track.formatName, c.format) << c.name;
    EXPECT_EQ(track.entries.Count(), c.entries) << c.name;
  }
}

TEST(LoaderDetection, IniFilesLoadThroughTheirNamedFile) {
  const TempFolder folder;
  folder.Write("movie.txt", kMicroDvd);
  const std::string ini = "[Micro DVD Ini File]\n[Subtitles]\n1=Lng:English\nFile=movie.txt\n";
  for (const char* name : {"a.ini", "a.MDV"}) {
    SubtitleTrack track;
    EXPECT_EQ(LoadSubtitleFile(track, folder.Write(name, ini).c_str()), 0) << name;
    EXPECT_EQ(track.formatName, "MicroDVD-INI") << name;
    EXPECT_EQ(track.entries.Count(), 1u) << name;
  }
  SubtitleTrack track;
  const std::string self = "[Micro DVD Ini File]\n[Subtitles]\n1=Lng:Self\nFile=self.ini\n";
  EXPECT_EQ(LoadSubtitleFile(track, folder.Write("self.ini", self).c_str()), -1);
  EXPECT_TRUE(track.formatName.IsEmpty());
}

}  // namespace
}  // namespace korvalin
