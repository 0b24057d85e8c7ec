#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "subtitles/readers/sami_reader.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {
namespace {

const std::string kCorpus = std::string(KORVALIN_CORPUS) + "/";

TEST(MarkupReadersCorpus, RealFilesLoadWithTheirFormat) {
  if (!std::filesystem::is_directory(kCorpus + "sami")) GTEST_SKIP() << "no corpus";
  const struct {
    const char* file;
    int result;
    const char* format;
    std::size_t entries;
  } cases[] = {
      {"sami/MicrosoftDocs-win32_sami-file-example.smi", 0, "SAMI", 1},  // two P joined
      {"sami/MicrosoftDocs-win32_sami-media-source.smi", 0, "SAMI", 3},
      {"sami/gst-plugins-base_subparse_sami.smi", 0, "SAMI", 2},
      {"sami/gst-plugins-base_subparse_sami_bad_entities.smi", 0, "SAMI", 1},
      {"sami/gst-plugins-base_subparse_sami_comment.smi", 0, "SAMI", 1},
      {"sami/gst-plugins-base_subparse_sami_html_entities.smi", 0, "SAMI", 3},
      {"sami/gst-plugins-base_subparse_sami_xml_entities.smi", 0, "SAMI", 2},
      {"sami/pycaption_sami_html5_entityref.smi", 0, "SAMI", 1},
      {"sami/pycaption_sami_missing_start.smi", 1, "", 0},  // its only SYNC has no time
      {"sami/pycaption_sami_no_lang.smi", 0, "SAMI", 1},
      {"sami/pycaption_sami_syntax_error.smi", 0, "SAMI", 2},
      {"sami/pycaption_sami_with_css_id_style.smi", 0, "SAMI", 4},
      {"sami/pycaption_sami_with_inline_lang.smi", 0, "SAMI", 1},
      {"sami/pycaption_sami_with_multi_lang.smi", 0, "SAMI", 1},
      {"sami/pycaption_sami_with_separate_multi_lang.smi", 0, "SAMI", 2},
      {"sami/pycaption_sami_with_unclosed_tag.smi", 0, "SAMI", 1},
      {"sami/pycaption_sample_sami.smi", 0, "SAMI", 7},
      {"sami/pysubs2_SAMI_INPUT1.smi", 0, "SAMI", 9},
      {"sami/pysubs2_SAMI_INPUT2.smi", 0, "SAMI", 1},
      {"sami/subforge_simple.smi", 0, "SAMI", 2},
      {"sami/subtitle-toolbox_multi_language.smi", 0, "SAMI", 3},  // Korean, the first
      {"sami/subtitleedit_SamiTest_encrypted_sync.smi", 0, "SAMI", 1},
      {"sami/subtitleedit_SamiTest_stray_style_end.smi", 0, "SAMI", 1},
      {"sami/vlc_testdata_Sami.smi", 0, "SAMI", 2},
      {"realtext/oxideav-subtitle_realtext_parse_SAMPLE.rt", 0, "RealText", 5},
      {"realtext/subforge_simple.rt", 0, "RealText", 3},
      {"realtext/subtitleedit_RealTimeTest_begin_only.rt", 0, "RealText", 3},
      {"realtext/subtitleedit_RealTimeTest_explicit_end.rt", 0, "RealText", 2},
      {"realtext/subtitleedit_RealTimeTest_static_window.rt", 1, "", 0},  // no time tag
      {"realtext/vlc_testdata_Realtime.rt", 0, "RealText", 5},
      {"dvdsubtitle/vlc_testdata_DVDSubtitle.sub", 0, "DVDSubtitle", 2},
      {"tmplayer/gaupol_tmplayer-1.txt", 0, "TMPlayer", 9},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_style1.txt", 0, "TMPlayer", 2},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_style2.txt", 0, "TMPlayer", 2},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_style3.txt", 0, "TMPlayer", 2},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_style3b.txt", 0, "TMPlayer", 4},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_style4.txt", 0, "TMPlayer", 2},
      {"tmplayer/pysubs2_overlapping_read.txt", 0, "TMPlayer", 4},
      {"tmplayer/pysubs2_simple_read.txt", 0, "TMPlayer", 3},
      {"tmplayer/pysubs2_styled_read.txt", 0, "TMPlayer", 2},
      {"tmplayer/subtitle-toolbox_tmplayer_crlf.txt", 0, "TMPlayer", 5},
      {"tmplayer/subtitle-toolbox_tmplayer_plus.txt", 0, "TMPlayer", 4},
      // Not TMPlayer as its lines go: times longer than eight characters (negative ones and
      // the ",1=" line-numbered form), a "#" comment line, a space as the separator. Every
      // other reader of the row refuses them too; DVDSubtitle, last, finds no block.
      {"tmplayer/gaupol_tmplayer.txt", 1, "", 0},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_multiline.txt", 1, "", 0},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_multiline_bogus.txt", 1, "", 0},
      {"tmplayer/gst-plugins-base_subparse_tmplayer_style4_bogus.txt", 1, "", 0},
      {"tmplayer/subtitle-toolbox_tmplayer_multiline_bom.txt", 1, "", 0},
      {"tmplayer/vlc_testdata_Vplayer.txt", 1, "", 0},
      // The two text lines after each marker are taken whatever they hold: these test
      // strings follow a one-line text with the next marker or end inside the text.
      {"aqtitle/oxideav-subtitle_aqtitle_parse_basic.aqt", -1, "", 0},
      {"aqtitle/oxideav-subtitle_aqtitle_parse_multiline.aqt", -1, "", 0},
      {"aqtitle/vlc_testdata_AQT.aqt", -1, "", 0},
  };
  for (const auto& c : cases) {
    SubtitleTrack track;
    EXPECT_EQ(LoadSubtitleFile(track, (kCorpus + c.file).c_str()), c.result) << c.file;
    EXPECT_EQ(track.formatName, c.format) << c.file;
    EXPECT_EQ(track.entries.Count(), c.entries) << c.file;
  }
}

TEST(MarkupReadersCorpus, LongCaptionFileReadsWhole) {
  const std::string path = kCorpus + "sami/pycaption_example.sami";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no corpus";
  SubtitleTrack track;
  EXPECT_EQ(LoadSubtitleFile(track, path.c_str()), -1);  // ".sami" is no extension of the table
  track.preferredLanguage.Assign("english");
  ASSERT_EQ(ReadSami(track, path.c_str()), 0);
  EXPECT_EQ(track.entries.Count(), 1847u);
  EXPECT_EQ(track.entries[0]->start, 9209);
}

}  // namespace
}  // namespace korvalin
