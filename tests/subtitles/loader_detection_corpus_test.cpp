#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "subtitles/readers/jacosub_reader.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {
namespace {

// Real files loaded as a user would, through the loader and their extension's row (JACOsub
// samples are named .jss, which no row holds, so they go to their reader directly).
TEST(LoaderDetectionCorpus, RealFilesLoadWithTheirFormatAndEntryCount) {
  const std::string corpus = std::string(KORVALIN_CORPUS) + "/";
  if (!std::filesystem::is_directory(corpus + "microdvd")) GTEST_SKIP() << "no corpus";
  const struct {
    const char* file;
    int result;
    const char* format;
    std::size_t entries;
  } cases[] = {
      {"microdvd/SubtitlesParser_Freaks_fr.sub", 0, "MicroDVD", 714},          // no rate line
      {"microdvd/SubtitlesParser_Gangs-of-New-York.sub", 0, "MicroDVD", 748},  // 12.5 fps
      {"microdvd/SubtitlesParser_Pirates_CD1.sub", 0, "MicroDVD", 420},
      {"microdvd/Jubler_microdvd.sub", 0, "MicroDVD", 5},
      {"microdvd/gst-plugins-base_subparse_microdvd_italics.sub", 0, "MicroDVD", 1},
      {"microdvd/pysubs2_tags.sub", 0, "MicroDVD", 5},
      {"microdvd/subtitleedit_MicroDVDTest_empty_timecodes.sub", 0, "MicroDVD", 5},
      {"microdvd/gaupol_microdvd.sub", -1, "", 0},                // negative frames
      {"microdvd/pysubs2_extra_whitespace.sub", -1, "", 0},       // spaces inside the braces
      {"microdvd/pysubs2_parser_skipping_lines.sub", -1, "", 0},  // foreign lines
      {"subviewer1/subtitle-toolbox_subtitle_edit_v1_shape.sub", 0, "SubViewer 1.0", 4},
      {"subviewer1/vlc_testdata_SubViewer1.sub", 0, "SubViewer 1.0", 1},
      {"subviewer1/subtitle-toolbox_subviewer1_delay.sub", -1, "", 0},  // header lines odd
      {"subviewer2/SubtitlesParser_battlestar.galactica.s03e09.sub", 0, "SubViewer 2.0", 336},
      {"subviewer2/Jubler_subviewer2.sub", 0, "SubViewer 2.0", 3},
      {"subviewer2/gst-plugins-base_subparse_subviewer2.sub", 0, "SubViewer 2.0", 2},
      {"subviewer2/subtitle-toolbox_subviewer2_crlf.sub", 0, "SubViewer 2.0", 5},  // last has
      {"subviewer2/vlc_testdata_SubViewer.sub", 0, "SubViewer 2.0", 1},  // no separator line
      {"subviewer2/gaupol_subviewer2.sub", -1, "", 0},  // blank line after the header
      {"subviewer2/Jubler_subviewer.sub", -1, "", 0},   // texts on several lines
      {"ssa/SubtitlesParser_HP2.ssa", 0, "Sub Station Alpha", 622},
      {"ssa/SubtitlesParser_HellBoy2.ssa", 0, "Sub Station Alpha", 849},
      {"ssa/SubtitlesParser_Lost_and_Delirious_fr.ssa", 0, "Sub Station Alpha", 933},
      {"ssa/Jubler_comprehensive.ssa", 0, "Sub Station Alpha", 31},
      {"ssa/gpac-testsuite_subtitle.ssa", 0, "Sub Station Alpha", 5},  // v4.00+
      {"ssa/subforge_simple.ssa", 0, "Sub Station Alpha", 3},          // no ScriptType
      {"ssa/subtitleedit_test.ssa", 0, "Sub Station Alpha", 3},        // byte order mark
      {"ssa/go-astisub_example-in-carriage-return.ssa", 1, "", 0},     // one line, no events
      {"jacosub/subtitleedit_JacoSubSubtitleTest.jss", 0, "JACOsub", 2},
      {"jacosub/subtitleedit_JacoSubSubtitleTestItalicAndBold.jss", 0, "JACOsub", 4},
      {"jacosub/vlc_testdata_JSS.jss", 0, "JACOsub", 3},
      {"jacosub/oxideav-subtitle_jacosub_parse_SAMPLE.jss", -1, "JACOsub", 0},  // "@" times
  };
  for (const auto& c : cases) {
    const std::string path = corpus + c.file;
    SubtitleTrack track;
    const bool jacoSub = path.ends_with(".jss");
    const int result =
        jacoSub ? ReadJacoSub(track, path.c_str()) : LoadSubtitleFile(track, path.c_str());
    EXPECT_EQ(result, c.result) << c.file;
    EXPECT_EQ(track.formatName, c.format) << c.file;
    EXPECT_EQ(track.entries.Count(), c.entries) << c.file;
  }
}

TEST(LoaderDetectionCorpus, FrameRateLinesTurnFramesIntoMilliseconds) {
  const std::string path =
      std::string(KORVALIN_CORPUS) + "/microdvd/gst-plugins-base_subparse_microdvd_fps.sub";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no corpus";
  SubtitleTrack track;
  ASSERT_EQ(LoadSubtitleFile(track, path.c_str()), 0);
  EXPECT_FALSE(track.framesPending);
  ASSERT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[1]->start, 100000);  // frame 1250 at 12.5 fps
}

}  // namespace
}  // namespace korvalin
