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

std::string ValueOf(const std::string& listing, const std::string& name) {
  const auto at = listing.find("\n" + name + "=");
  if (at == std::string::npos) return "<missing>";
  const auto begin = at + name.size() + 2;
  return listing.substr(begin, listing.find('\n', begin) - begin);
}

TEST(SettingsCli, EmptyStoreShowsTheDefaults) {
  const TempDir dir;
  const CliResult r = RunCli({"settings", "show"}, dir.registry());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, kDefaults);
}

TEST(SettingsCli, SetStoresRawValuesThatShowReadsWithinTheirRanges) {
  const TempDir dir;
  ASSERT_EQ(RunCli({"settings", "set", "Overscan=31", "SubDelay=-600000", "SubFace=Liberation Serif",
                    "subspeed=1001", "OSDColor=0x0000FF"},
                   dir.registry())
                .status,
            0);
  const std::string shown = "\n" + RunCli({"settings", "show"}, dir.registry()).out;
  EXPECT_EQ(ValueOf(shown, "Overscan"), "8");  // out of range reads as the default
  EXPECT_EQ(ValueOf(shown, "SubDelay"), "-600000");
  EXPECT_EQ(ValueOf(shown, "SubFace"), "Liberation Serif");
  EXPECT_EQ(ValueOf(shown, "SubSpeed"), "1001");
  EXPECT_EQ(ValueOf(shown, "OSDColor"), "255");
  EXPECT_NE(ReadFile(dir.registry()).find("\"Overscan\"=dword:0000001f"), std::string::npos);
}

TEST(SettingsCli, BadAssignmentsWriteNothing) {
  const TempDir dir;
  for (const auto& bad : {"Bogus=1", "Overscan", "Overscan=eight", "Overscan=99999999999"}) {
    const CliResult r = RunCli({"settings", "set", "Overscan=12", bad}, dir.registry());
    EXPECT_EQ(r.status, 2) << bad;
    EXPECT_FALSE(r.err.empty()) << bad;
  }
  EXPECT_NE(RunCli({"settings", "set", "Bogus=1"}, dir.registry()).err.find("Bogus"),
            std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir.registry()));
}

TEST(SettingsCli, ResetRemovesEveryValue) {
  const TempDir dir;
  ASSERT_EQ(RunCli({"settings", "set", "TV=1", "SubLang=French"}, dir.registry()).status, 0);
  ASSERT_EQ(RunCli({"settings", "reset"}, dir.registry()).status, 0);
  EXPECT_EQ(RunCli({"settings", "show"}, dir.registry()).out, kDefaults);
}

TEST(GeometryCli, PrintsTheGeometryUnderTheStoredSettings) {
  const TempDir dir;
  struct {
    std::vector<std::string> set;
    std::vector<std::string> args;
    const char* expected;
  } cases[] = {
      {{}, {"640x272", "--subtitles"},
       "copyWidth=640 inputLeft=0 leftBorder=0 rightBorder=0 outputWidth=640 outputHeight=480 "
       "pictureTop=104\n"},
      {{"bFill=1"}, {"640x272", "--subtitles"},
       "copyWidth=484 inputLeft=78 leftBorder=0 rightBorder=0 outputWidth=484 outputHeight=363 "
       "pictureTop=45\n"},
      {{"bFill=0", "bOverscan=1"}, {"720x576"},
       "copyWidth=720 inputLeft=0 leftBorder=28 rightBorder=28 outputWidth=776 "
       "outputHeight=576 pictureTop=0\n"},
      {{"bOverscan=0", "bFillH=1", "TV=1"}, {"720x576"},
       "copyWidth=720 inputLeft=0 leftBorder=0 rightBorder=0 outputWidth=720 outputHeight=405 "
       "pictureTop=-85\n"},
      {{"bFillH=0", "TV=0", "Overlay=1"}, {"720x576", "--subtitles", "--picture-aspect", "16:9"},
       "copyWidth=720 inputLeft=0 leftBorder=0 rightBorder=0 outputWidth=720 outputHeight=767 "
       "pictureTop=95\n"},
  };
  for (const auto& c : cases) {
    if (!c.set.empty()) {
      std::vector<std::string> set{"settings", "set"};
      set.insert(set.end(), c.set.begin(), c.set.end());
      ASSERT_EQ(RunCli(set, dir.registry()).status, 0);
    }
    std::vector<std::string> args{"geometry"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const CliResult r = RunCli(args, dir.registry());
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, c.expected) << c.args[0];
  }
}

TEST(GeometryCli, RejectsBadArguments) {
  const TempDir dir;
  for (const auto& args : std::vector<std::vector<std::string>>{
           {"geometry"}, {"geometry", "720"}, {"geometry", "0x576"}, {"geometry", "720x576", "x"},
           {"geometry", "720x576", "--picture-aspect"}, {"geometry", "720x576", "--picture-aspect", "4-3"}}) {
    const CliResult r = RunCli(args, dir.registry());
    EXPECT_EQ(r.status, 2) << args.back();
    EXPECT_NE(r.err.find("korvalin: geometry"), std::string::npos) << args.back();
  }
}

}  // namespace
}  // namespace korvalin::testing
