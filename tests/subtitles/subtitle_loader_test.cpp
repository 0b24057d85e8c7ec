#include "subtitles/subtitle_loader.h"

#include <gtest/gtest.h>

#include <string>

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
constexpr const char* kDvdSubtitle = "{T 00:00:01:00\nA\n}";

TEST(ExtensionKey, TakesTheLastFourCharactersFromTheirFirstFullStop) {
  const struct {
    const char* path;
    const char* key;
  } cases[] = {
      {"/a/movie.Srt", ".SRT"}, {"/a/movie.js", ".JS"}, {"/a/x.b.rt", ".RT"},
      {"/a/page.html", "HTML"}, {"/a/noext", "OEXT"},   {"a.", "."},
      {"", ""},                 {"/a/m.\xE9\xBA\xF7", ".\xC9\xAA\xF7"},
  };
  for (const auto& c : cases) EXPECT_EQ(ExtensionKey(c.path), c.key) << c.path;
}

// Each file must pass the readers before it in its extension's row and stop at its own.
TEST(LoadSubtitleFile, EachRowReachesTheRightReader) {
  const struct {
    const char* name;
    const char* bytes;
    int result;
    const char* format;
  } cases[] = {
      {"a.srt", kSubRip, 0, "SubRip"},
      {"b.SRT", kSubRip, 0, "SubRip"},
      {"srt.txt", kSubRip, 0, "SubRip"},
      {"srt.sub", kSubRip, 0, "SubRip"},
      {"md.txt", kMicroDvd, 0, "MicroDVD"},
      {"md.sub", kMicroDvd, 0, "MicroDVD"},
      {"md.srt", kMicroDvd, 0, "MicroDVD"},
      {"sv2.sub", kSubViewer2, 0, "SubViewer 2.0"},
      {"sv2.srt", kSubViewer2, 0, "SubViewer 2.0"},
      {"sv2.txt", kSubViewer2, 0, "SubViewer 2.0"},
      {"sv1.sub", kSubViewer1, 0, "SubViewer 1.0"},
      {"sv1.srt", kSubViewer1, 0, "SubViewer 1.0"},
      {"sv1.txt", kSubViewer1, 0, "SubViewer 1.0"},
      {"dvd.sub", kDvdSubtitle, 0, "DVDSubtitle"},
      {"dvd.srt", kDvdSubtitle, 0, "DVDSubtitle"},
      {"dvd.txt", kDvdSubtitle, 0, "DVDSubtitle"},
      {"tmp.TXT", "\xEF\xBB\xBF" "00:00:01:Hi\r\n", 0, "TMPlayer"},  // after MicroDVD refuses
      {"a.ssa", "Dialogue: 0,0:00:01.00,0:00:02.00,a,b,0,0,0,x\n", 0, "Sub Station Alpha"},
      {"a.JS", "0:00:01.00 0:00:02.00 D x\n", 0, "JACOsub"},
      {"a.aqt", "-->> 1\nx\n\n", 0, "AqTitle"},
      {"a.b.rt", "<time begin=1>x", 0, "RealText"},
      {"a.SMI", "<SAMI><SYNC Start=1>x", 0, "SAMI"},
      {"b.smi", kSubRip, -1, ""},  // only its own reader is tried
      {"f.idx", kSubRip, -1, ""},
      {"i.srt", "", 1, ""},
      {"partial.srt", "1\n00:00:01,000 --> 00:00:02,000\nx\n\n0\n", 1, ""},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    EXPECT_EQ(LoadSubtitleFile(track, folder.Write(c.name, c.bytes).c_str()), c.result) << c.name;
    EXPECT_EQ(track.formatName, c.format) << c.name;
    EXPECT_EQ(track.entries.Count(), c.result == 0 ? 1u : 0u) << c.name;
    if (c.result != 0) {
      EXPECT_EQ(track.fileName, "") << c.name;
    }
  }
}

TEST(LoadSubtitleFile, IniFilesLoadThroughTheirNamedFileButNotThemselves) {
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

TEST(LoadSubtitleFile, NullOrEmptyPathLeavesTheTrackReset) {
  SubtitleTrack track;
  track.AddEntry(std::make_unique<SubtitleEntry>(0, 1, "old"));
  track.fileDelay = 3;
  EXPECT_EQ(LoadSubtitleFile(track, nullptr), -1);
  EXPECT_TRUE(track.entries.IsEmpty());
  EXPECT_EQ(track.fileDelay, 0);
  EXPECT_EQ(LoadSubtitleFile(track, ""), -1);
}

}  // namespace
}  // namespace korvalin
