#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "loader_detection_entries.h"
#include "subtitles/readers/jacosub_reader.h"
#include "subtitles/readers/sami_reader.h"
#include "subtitles/readers/subrip_reader.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {
namespace {

const std::string kCorpus = std::string(KORVALIN_CORPUS) + "/";

// Real files loaded as a user would, through the loader and their extension's row. The
// SubRip samples go to their reader directly, as do the JACOsub ones (.jss is in no row).
TEST(Corpus, RealFilesLoadWithTheirFormatAndEntryCount) {
  if (!std::filesystem::is_directory(kCorpus + "microdvd")) GTEST_SKIP() << "no corpus";
  const struct {
    const char* file;
    int result;
    const char* format;
    std::size_t entries;
  } cases[] = {
      {"microdvd/SubtitlesParser_Freaks_fr.sub", 0, "MicroDVD", 714},          // no rate line
      {"microdvd/SubtitlesParser_Gangs-of-New-York.sub", 0, "MicroDVD", 748},  // 12.5 fps
      {"microdvd/gaupol_microdvd.sub", -1, "", 0},                             // negative frames
      {"microdvd/pysubs2_extra_whitespace.sub", -1, "", 0},       // spaces inside the braces
      {"microdvd/pysubs2_parser_skipping_lines.sub", -1, "", 0},  // foreign lines
      {"subviewer1/subtitle-toolbox_subtitle_edit_v1_shape.sub", 0, "SubViewer 1.0", 4},
      {"subviewer1/subtitle-toolbox_subviewer1_delay.sub", -1, "", 0},  // header lines odd
      {"subviewer2/SubtitlesParser_battlestar.galactica.s03e09.sub", 0, "SubViewer 2.0", 336},
      {"subviewer2/vlc_testdata_SubViewer.sub", 0, "SubViewer 2.0", 1},  // no separator line
      {"subviewer2/gaupol_subviewer2.sub", -1, "", 0},  // blank line after the header
      {"subviewer2/Jubler_subviewer.sub", -1, "", 0},   // texts on several lines
      {"ssa/SubtitlesParser_HP2.ssa", 0, "Sub Station Alpha", 622},
      {"ssa/subtitleedit_test.ssa", 0, "Sub Station Alpha", 3},     // byte order mark
      {"ssa/go-astisub_example-in-carriage-return.ssa", 1, "", 0},  // one line, no events
      {"jacosub/subtitleedit_JacoSubSubtitleTest.jss", 0, "JACOsub", 2},
      {"jacosub/oxideav-subtitle_jacosub_parse_SAMPLE.jss", -1, "JACOsub", 0},  // "@" times
      {"sami/MicrosoftDocs-win32_sami-file-example.smi", 0, "SAMI", 1},         // two P joined
      {"sami/pycaption_sami_missing_start.smi", 1, "", 0},  // its only SYNC has no time
      {"sami/pycaption_sami_with_separate_multi_lang.smi", 0, "SAMI", 2},
      {"sami/subtitle-toolbox_multi_language.smi", 0, "SAMI", 3},  // Korean, the first
      {"realtext/oxideav-subtitle_realtext_parse_SAMPLE.rt", 0, "RealText", 5},
      {"realtext/subtitleedit_RealTimeTest_static_window.rt", 1, "", 0},  // no time tag
      {"dvdsubtitle/vlc_testdata_DVDSubtitle.sub", 0, "DVDSubtitle", 2},
      {"tmplayer/gaupol_tmplayer-1.txt", 0, "TMPlayer", 9},
      // Negative or line-numbered times, "#" comments, a space as the separator: every
      // reader of the row refuses them; DVDSubtitle, last, finds no block.
      {"tmplayer/gaupol_tmplayer.txt", 1, "", 0},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_multiline.txt", 1, "", 0},
      {"tmplayer/subtitle-toolbox_tmplayer_multiline_bom.txt", 1, "", 0},
      {"tmplayer/vlc_testdata_Vplayer.txt", 1, "", 0},
      // One-line texts followed by the next marker, or the end inside the text.
      {"aqtitle/oxideav-subtitle_aqtitle_parse_basic.aqt", -1, "", 0},
      {"aqtitle/oxideav-subtitle_aqtitle_parse_multiline.aqt", -1, "", 0},
      {"aqtitle/vlc_testdata_AQT.aqt", -1, "", 0},
      {"srt/SubtitlesParser_Fight_Club_eng.sub", 0, "SubRip", 2000},  // through the loader
      {"srt/SubtitlesParser_Annie_Hall.srt", 0, "SubRip", 1480},      // coordinates after times
      {"srt/pysrt_capability_tester.srt", 0, "SubRip", 37},           // BOM and CRLF
      {"srt/gaupol_subrip.srt", -1, "SubRip", 0},                     // negative times do not scan
      {"srt/pysrt_windows-1252.srt", -1, "SubRip", 0},                // first counter is 0
      {"srt/pysrt_no-indexes.srt", -1, "SubRip", 0},
      {"srt/pysrt_invalid.srt", -1, "SubRip", 0},                   // times without milliseconds
      {"srt/go-astisub_example-in-non-utf8.srt", -1, "SubRip", 0},  // UTF-16, no milliseconds
  };
  for (const auto& c : cases) {
    const std::string path = kCorpus + c.file;
    SubtitleTrack track;
    int result;
    if (path.ends_with(".jss")) {
      result = ReadJacoSub(track, path.c_str());
    } else if (path.ends_with(".srt") || path.ends_with(".SRT")) {
      result = ReadSubRip(track, path.c_str());
    } else {
      result = LoadSubtitleFile(track, path.c_str());
    }
    EXPECT_EQ(result, c.result) << c.file;
    EXPECT_EQ(track.formatName, c.format) << c.file;
    if (result == 0) {
      EXPECT_EQ(track.entries.Count(), c.entries) << c.file;
    }
  }
}

// Saved as UTF-16 or UTF-32 (either byte order), a file loads as its UTF-8 twin does.
TEST(Corpus, WideTextFilesLoadAsTheirUtf8Twin) {
  const std::string twin = kCorpus + "srt/pysrt_bom-utf-8.srt";
  if (!std::filesystem::exists(twin)) GTEST_SKIP() << "no corpus";
  SubtitleTrack expected;
  ASSERT_EQ(LoadSubtitleFile(expected, twin.c_str()), 0);
  ASSERT_EQ(expected.entries.Count(), 7u);
  for (const char* name : {"utf-16-le", "utf-16-be", "utf-32-le", "utf-32-be"}) {
    const std::string path = kCorpus + "srt/pysrt_bom-" + name + ".srt";
    SubtitleTrack track;
    EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), 0) << name;
    EXPECT_EQ(testing::DescribeEntries(track), testing::DescribeEntries(expected)) << name;
  }
}

TEST(Corpus, FrameRateLineTurnsFramesIntoMilliseconds) {
  const std::string path = kCorpus + "microdvd/gst-plugins-base_subparse_microdvd_fps.sub";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no corpus";
  SubtitleTrack track;
  ASSERT_EQ(LoadSubtitleFile(track, path.c_str()), 0);
  EXPECT_FALSE(track.framesPending);
  ASSERT_EQ(track.entries.Count(), 2u);
  EXPECT_EQ(track.entries[1]->start, 100000);  // frame 1250 at 12.5 fps
}

TEST(Corpus, LongSamiFileReadsWhole) {
  const std::string path = kCorpus + "sami/pycaption_example.sami";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no corpus";
  SubtitleTrack track;
  EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), -1);  // ".sami" is in no row
  track.preferredLanguage.Assign("english");
  ASSERT_EQ(ReadSami(track, path.c_str()), 0);
  EXPECT_EQ(track.entries.Count(), 1847u);
  EXPECT_EQ(track.entries[0]->start, 9209);
}

}  // namespace
}  // namespace korvalin
