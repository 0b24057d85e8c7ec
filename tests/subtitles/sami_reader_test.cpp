#include "subtitles/readers/sami_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "loader_detection_entries.h"
#include "subtitles/subtitle_loader.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using testing::DescribeEntries;
using testing::TempFolder;

constexpr char kTwoLanguages[] =
    "<SAMI><HEAD><STYLE TYPE=\"text/css\"><!--\n"
    "P { font-family: Arial; }\n"
    "/* the languages */\n"
    ".ENUSCC { Name: English; lang: en-US; }\n"
    ".FRFRCC { Name: French; lang: fr-FR; }\n"
    ".UNUSED { Name: Unused; }\n"
    "--></STYLE></HEAD><BODY>\n"
    "<SYNC Start=1000><P Class=ENUSCC>One</P><P Class=FRFRCC>Un</P></SYNC>\n"
    "<SYNC Start=3000><P Class=ENUSCC>Two\n<!-- no French here -->\n"
    "<SYNC Start=5000><P Class=FRFRCC>&nbsp;\n"
    "</BODY></SAMI>\n";

std::string StreamNames(const SubtitleTrack& track) {
  std::string names;
  for (const DynString* name : track.streamNames) names += std::string(name->c_str()) + "|";
  return names;
}

TEST(SamiReader, ReadsThePreferredLanguage) {
  const struct {
    const char* preferred;
    int32_t streamIndex;
    const char* entries;
  } cases[] = {
      {"french", 1, "1000-4999:Un|"},
      {"ENGLISH", 0, "1000-2999:One|3000-2147483647:Two|"},
      {"German", 0, "1000-2999:One|3000-2147483647:Two|"},  // the parser's choice: the first
  };
  const TempFolder folder;
  const std::string path = folder.Write("two.smi", kTwoLanguages);
  for (const auto& c : cases) {
    SubtitleTrack track;
    track.preferredLanguage.Assign(c.preferred);
    ASSERT_EQ(ReadSami(track, path.c_str()), 0) << c.preferred;
    EXPECT_EQ(StreamNames(track), "English|French|") << c.preferred;
    EXPECT_EQ(track.streamIndex, c.streamIndex) << c.preferred;
    EXPECT_EQ(DescribeEntries(track), c.entries) << c.preferred;
    EXPECT_EQ(track.formatName, "SAMI");
  }
}

TEST(SamiReader, ParsesRealWorldMarkup) {
  const struct {
    const char* name;
    std::string bytes;
    int result;
    const char* streams;
    const char* entries;
  } cases[] = {
      {"any letter case, no closing tags",
       "<sami><body><sync start=\"2000\"><p class=\"a\">x<SYNC START = 1000><P CLASS = A>y", 0,
       "a|", "1000-1999:y|2000-2147483647:x|"},
      {"two paragraphs of a stream join",
       "<SAMI><SYNC Start=1><P Class=E ID=Src>Narrator<P Class=E>Hello  <br>\n  there</SAMI>", 0,
       "E|", "1-2147483647:Narrator/Hello/there|"},
      {"a SYNC without paragraphs clears every stream",
       "<SAMI><SYNC Start=0><P Class=A>a<P Class=B>b<SYNC Start=9>&nbsp;<SYNC Start=20>"
       "<P Class=A>c",
       0, "A|B|", "0-8:a|20-2147483647:c|"},
      {"names from Name, then lang, then the class",
       "<SAMI><STYLE>.X {lang: xx;} .Y {Name: 'Why Not';} .Z {color: red}</STYLE>"
       "<SYNC Start=0><P Class=z>z<P Class=y>y<P Class=x>x",
       0, "xx|Why Not|Z|", "0-2147483647:x|"},
      {"a paragraph without class is in every stream", "<SAMI><SYNC Start=0><P Class=A>a<P>all", 0,
       "A|", "0-2147483647:a/all|"},
      {"a SYNC without start is left out",
       "<SAMI><SYNC><P>lost<SYNC Start=x><P>lost<SYNC Start=5><P>kept", 0, "",
       "5-2147483647:kept|"},
      {"comments and an unterminated STYLE",
       "\xEF\xBB\xBF<SAMI><!-- <SYNC Start=1><P>no --><STYLE>.A {Name: Gone;}\n"
       "<SYNC Start=2><P Class=A>yes <!-- hidden -->done",
       0, "A|", "2-2147483647:yes done|"},
      {"references in a UTF-8 file stay UTF-8",
       "<SAMI><SYNC Start=1><P>\xC3\xBC &#8211;&#150;&auml;&#65;&#228", 0, "",
       "1-2147483647:\xC3\xBC \xE2\x80\x93\xE2\x80\x93\xC3\xA4"
       "A\xC3\xA4|"},
      {"references in a code-page file are bytes", "<SAMI><SYNC Start=1><P>\xFC&#228;", 0, "",
       "1-2147483647:\xFC\xE4|"},
      {"only clears", "<SAMI><SYNC Start=1><P>&nbsp;</SAMI>", 1, "", ""},
      {"no SAMI at all", "1\n00:00:01,000 --> 00:00:02,000\nx\n", -1, "", ""},
  };
  const TempFolder folder;
  for (const auto& c : cases) {
    SubtitleTrack track;
    const std::string path = folder.Write("case.smi", c.bytes);
    EXPECT_EQ(ReadSami(track, path.c_str()), c.result) << c.name;
    EXPECT_EQ(StreamNames(track), c.streams) << c.name;
    EXPECT_EQ(DescribeEntries(track), c.entries) << c.name;
  }
}

TEST(SamiReader, ReadsUtf16WithItsByteOrderMark) {
  constexpr char kBytes[] =
      "\xFF\xFE<\0S\0Y\0N\0C\0 \0S\0t\0a\0r\0t\0=\0"
      "7\0>\0\xE9\0";
  const std::string little(kBytes, sizeof kBytes - 1);
  const TempFolder folder;
  SubtitleTrack track;
  ASSERT_EQ(ReadSami(track, folder.Write("u16.smi", little).c_str()), 0);
  EXPECT_EQ(DescribeEntries(track), "7-2147483647:\xC3\xA9|");
}

TEST(SamiReader, SmiFilesGoToNoOtherReader) {
  const TempFolder folder;
  SubtitleTrack track;
  EXPECT_EQ(LoadSubtitleFile(track, folder.Write("a.SMI", "<SAMI><SYNC Start=1>x").c_str()), 0);
  EXPECT_EQ(track.formatName, "SAMI");
  const std::string subRip = folder.Write("b.smi", "1\n00:00:01,000 --> 00:00:02,000\nx\n");
  EXPECT_EQ(LoadSubtitleFile(track, subRip.c_str()), -1);
  EXPECT_TRUE(track.formatName.IsEmpty());
  EXPECT_EQ(ReadSami(track, (folder.path() / "missing.smi").c_str()), -1);
}

}  // namespace
}  // namespace korvalin
