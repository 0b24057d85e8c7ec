#include <gtest/gtest.h>

#include "apps/cli_runner.h"

namespace korvalin::testing {
namespace {

constexpr const char* kDefaults =
    "LoadMode=0\nbOverscan=0\nOverscan=8\nbFill=0\nFill=75\nbFillH=0\nFillH=100\nbFill2=1\n"
    "Flip=0\nTV=0\nOverlay=0\nAspectComp=0\nAspectComp2=4:3\nFPSConv=0\nYShift=0\nEconomic=0\n"
    "SysTrayIcon=1\nSubLang=English\nSubPath=~/.local/share/korvalin/subtitles;.\nSubDelay=0\n"
    "SubSpeed=1000\nSubCharset=Western\nSubFace=Arial\nSubColor=16777215\nSubTransparent=1\n"
    "SubSize=36\nSubWeight=500\nSubXPos=50\nSubYPos=8\nOSDVideoTime=0\nOSDWorldTime=0\n"
    "OSDCharset=Western\nOSDFace=Arial\nOSDColor=16777215\nOSDTransparent=1\nOSDSize=24\n"
    "OSDWeight=700\nOSDXPos=94\nOSDYPos=94\n";

TEST(SettingsCli, ShowSetAndResetKeepValuesWithinTheirRanges) {
  const TempDir dir;
  const CliResult empty = dir.Run({"settings", "show"});
  EXPECT_EQ(empty.status, 0) << empty.err;
  EXPECT_EQ(empty.out, kDefaults);
  ASSERT_EQ(dir.Run({"settings", "set", "Overscan=31", "SubDelay=-600000",
                     "SubFace=Liberation Serif", "subspeed=1001", "OSDColor=0x0000FF"})
                .status,
            0);
  const std::string shown = dir.Run({"settings", "show"}).out;
  for (const char* line : {"\nOverscan=8\n",  // out of range reads as the default
                           "\nSubDelay=-600000\n", "\nSubFace=Liberation Serif\n",
                           "\nSubSpeed=1001\n", "\nOSDColor=255\n"})
    EXPECT_NE(shown.find(line), std::string::npos) << line;
  EXPECT_NE(ReadFile(dir.registry()).find("\"Overscan\"=dword:0000001f"), std::string::npos);
  ASSERT_EQ(dir.Run({"settings", "reset"}).status, 0);
  EXPECT_EQ(dir.Run({"settings", "show"}).out, kDefaults);
}

TEST(SettingsCli, OutOfRangeNumbersAreStoredWithAWarning) {
  const TempDir dir;
  const struct {
    const char* assignment;
    const char* stored;   // in the file
    const char* warning;  // on stderr, "" for none
  } cases[] = {
      {"Overscan=999", "\"Overscan\"=dword:000003e7",
       "Overscan=999 is out of range (0 to 30) and will read as the default, 8"},
      {"subspeed=0", "\"SubSpeed\"=dword:00000000",
       "SubSpeed=0 is out of range (1 to 5000) and will read as the default, 1000"},
      {"SubColor=0xFFFFFFFF", "\"SubColor\"=dword:ffffffff",
       "SubColor=0xFFFFFFFF is out of range (0 to 16777215) and will read as the default, "
       "16777215"},
      {"Overscan=30", "\"Overscan\"=dword:0000001e", ""},
  };
  for (const auto& c : cases) {
    const CliResult r = dir.Run({"settings", "set", c.assignment});
    EXPECT_EQ(r.status, 0) << c.assignment;
    EXPECT_EQ(r.err, *c.warning ? std::string("korvalin: settings set: ") + c.warning + "\n" : "");
    EXPECT_NE(ReadFile(dir.registry()).find(c.stored), std::string::npos) << c.assignment;
  }
}

TEST(SettingsCli, BadAssignmentsWriteNothing) {
  const TempDir dir;
  for (const auto& bad : {"Bogus=1", "Overscan", "Overscan=eight", "Overscan=99999999999"})
    dir.ExpectFailures({{"settings", "set", "Overscan=12", bad}}, 2, "");
  dir.ExpectFailures({{"settings", "set", "Bogus=1"}}, 2, "Bogus");
  EXPECT_FALSE(std::filesystem::exists(dir.registry()));
}

TEST(GeometryCli, PrintsTheGeometryUnderTheStoredSettings) {
  const TempDir dir;
  const struct {
    std::vector<std::string> set, args;
    const char* expected;
  } cases[] = {
      {{}, {"640x272", "--subtitles"}, "640 0 0 0 640 480 104"},
      {{"bFill=1"}, {"640x272", "--subtitles"}, "484 78 0 0 484 363 45"},
      {{"bFill=0", "bOverscan=1"}, {"720x576"}, "720 0 28 28 776 576 0"},
      {{"bOverscan=0", "bFillH=1", "TV=1"}, {"720x576"}, "720 0 0 0 720 405 -85"},
      {{"bFillH=0", "TV=0", "Overlay=1"},
       {"720x576", "--subtitles", "--picture-aspect", "16:9"},
       "720 0 0 0 720 767 95"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> set{"settings", "set"}, args{"geometry"};
    set.insert(set.end(), c.set.begin(), c.set.end());
    args.insert(args.end(), c.args.begin(), c.args.end());
    if (!c.set.empty()) {
      ASSERT_EQ(dir.Run(set).status, 0);
    }
    const CliResult r = dir.Run(args);
    EXPECT_EQ(r.status, 0) << r.err;
    std::istringstream numbers(c.expected);
    std::string expected;
    for (const char* name : {"copyWidth", "inputLeft", "leftBorder", "rightBorder", "outputWidth",
                             "outputHeight", "pictureTop"}) {
      std::string n;
      numbers >> n;
      expected += std::string(expected.empty() ? "" : " ") + name + "=" + n;
    }
    EXPECT_EQ(r.out, expected + "\n") << c.args[0];
  }
  dir.ExpectFailures({{"geometry"},
                      {"geometry", "720"},
                      {"geometry", "0x576"},
                      {"geometry", "720x576", "x"},
                      {"geometry", "720x576", "--picture-aspect"},
                      {"geometry", "720x576", "--picture-aspect", "4-3"}},
                     2, "korvalin: geometry");
}

}  // namespace
}  // namespace korvalin::testing
