#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "subtitles/readers/subrip_reader.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {
namespace {

const std::string kSrtFolder = std::string(KORVALIN_CORPUS) + "/srt/";

TEST(SubRipCorpus, RealFilesLoadOrAreRejectedAsTheGrammarSays) {
  if (!std::filesystem::is_directory(kSrtFolder)) GTEST_SKIP() << "no corpus";
  const struct {
    const char* name;
    int result;
    std::size_t entries;
  } cases[] = {
      {"SubtitlesParser_Annie_Hall.srt", 0, 1480},       // coordinates after the times
      {"SubtitlesParser_Salvage.SRT", 0, 474},           // windows-1256, trailing spaces
      {"pycaption_example.srt", 0, 1847},
      {"pysrt_bom-utf-8.srt", 0, 7},
      {"pysrt_capability_tester.srt", 0, 37},            // BOM and CRLF
      {"pysrt_empty.srt", 0, 7},                         // a cue with empty text
      {"subtitleedit_auto_detect_windows-1250.srt", 0, 1132},
      {"gst-plugins-base_subparse_srt_input6.srt", 0, 1},  // no final line feed
      {"gaupol_subrip.srt", -1, 0},                      // negative times do not scan
      {"pysrt_windows-1252.srt", -1, 0},                 // first counter is 0
      {"pysrt_no-indexes.srt", -1, 0},
      {"pysrt_invalid.srt", -1, 0},                      // times without milliseconds
      {"pysrt_bom-utf-16-le.srt", -1, 0},
      {"pysrt_bom-utf-32-be.srt", 1, 0},                 // a NUL first ends the input
  };
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = kSrtFolder + c.name;
    const int result = ReadSubRip(track, path.c_str());
    EXPECT_EQ(result, c.result) << c.name;
    if (result == 0) {
      EXPECT_EQ(track.entries.Count(), c.entries) << c.name;
    }
  }
}

TEST(SubRipCorpus, SubRipWithSubExtensionIsFoundByTheLoader) {
  const std::string path = kSrtFolder + "SubtitlesParser_Fight_Club_eng.sub";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no corpus";
  SubtitleTrack track;
  EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), 0);
  EXPECT_EQ(track.formatName, "SubRip");
  EXPECT_EQ(track.entries.Count(), 2000u);
}

}  // namespace
}  // namespace korvalin
