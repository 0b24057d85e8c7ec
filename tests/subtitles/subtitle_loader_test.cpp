#include "subtitles/subtitle_loader.h"

#include <gtest/gtest.h>

#include <string>

#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::TempFolder;

constexpr const char* kSubRip = "1\n00:00:01,000 --> 00:00:02,000\nHello\n";

TEST(ExtensionKey, TakesTheLastFourCharactersFromTheirFirstFullStop) {
  const struct {
    const char* path;
    const char* key;
  } cases[] = {
      {"/a/movie.srt", ".SRT"}, {"/a/movie.Srt", ".SRT"}, {"/a/movie.js", ".JS"},
      {"/a/x.b.rt", ".RT"},     {"/a/page.html", "HTML"}, {"/a/noext", "OEXT"},
      {"a.", "."},              {"", ""},                 {"/a/m.\xE9\xBA\xF7", ".\xC9\xAA\xF7"},
  };
  for (const auto& c : cases) EXPECT_EQ(ExtensionKey(c.path), c.key) << c.path;
}

TEST(LoadSubtitleFile, ChoosesReadersByExtension) {
  const TempFolder folder;
  const struct {
    const char* name;
    const char* bytes;
    int result;
    const char* format;
  } cases[] = {
      {"a.srt", kSubRip, 0, "SubRip"},
      {"b.SRT", kSubRip, 0, "SubRip"},
      {"c.Srt", kSubRip, 0, "SubRip"},
      {"d.txt", kSubRip, 0, "SubRip"},
      {"e.sub", kSubRip, 0, "SubRip"},
      {"f.idx", kSubRip, -1, ""},
      {"g.smi", kSubRip, -1, ""},  // only its own reader is tried
      {"i.srt", "", 1, ""},
  };
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write(c.name, c.bytes);
    EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(track.formatName, c.format) << c.name;
    EXPECT_EQ(track.entries.IsEmpty(), c.result != 0) << c.name;
  }
}

TEST(LoadSubtitleFile, FileNoReaderAcceptsLeavesTheTrackReset) {
  const TempFolder folder;
  SubtitleTrack track;
  const std::string path = folder.Write("h.srt", "1\n00:00:01,000 --> 00:00:02,000\nx\n\n0\n");
  EXPECT_NE(LoadSubtitleFile(track, path.c_str()), 0);
  EXPECT_TRUE(track.entries.IsEmpty());  // SubRip's partial entry is gone
  EXPECT_EQ(track.fileName, "");
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
