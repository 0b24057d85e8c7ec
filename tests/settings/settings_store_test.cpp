#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "platform/registry_store.h"
#include "settings/font_style.h"
#include "settings/registry_path.h"
#include "settings/setting_fields.h"
#include "settings/settings.h"
#include "support/temp_folder.h"

namespace korvalin {
namespace {

using platform::RegistryStore;
using platform::RootKey;
using namespace std::string_literals;

std::string Path(std::string_view name) {
  return std::string(kSettingsKeyPath) + "\\" + std::string(name);
}

// Every stored field as text, by name, in load order.
struct Collector {
  std::vector<std::pair<std::string, std::string>> fields;
  template <class I>
  void Int(std::string_view name, const I& field, int32_t, int32_t, int32_t) {
    fields.emplace_back(std::string(name), std::to_string(field));
  }
  template <class T>
  void Text(std::string_view name, const T& field, std::string_view) {
    fields.emplace_back(std::string(name), field.str());
  }
};

std::vector<std::pair<std::string, std::string>> Fields(const Settings& s) {
  Collector collector;
  VisitFieldsInLoadOrder(s, collector);
  return collector.fields;
}

class SettingsStoreTest : public ::testing::Test {
 protected:
  testing::TempFolder folder_;
  RegistryStore store_{folder_.path() / "registry.reg"};
  RegistryPath registry_{store_};
};

TEST_F(SettingsStoreTest, AnEmptyStoreGivesExactlyTheDefaults) {
  const Settings loaded(store_);
  EXPECT_EQ(Fields(loaded), Fields(Settings{Settings::DefaultsOnly{}}));
  std::string all;
  for (const auto& [name, value] : Fields(loaded)) all += name + "=" + value + " ";
  EXPECT_EQ(all,
            "LoadMode=0 bOverscan=0 Overscan=8 bFill=0 Fill=75 bFillH=0 FillH=100 bFill2=1 Flip=0 "
            "TV=0 Overlay=0 AspectComp=0 AspectComp2=4:3 FPSConv=0 YShift=0 Economic=0 "
            "SysTrayIcon=1 SubLang=English SubPath=~/.local/share/korvalin/subtitles;. SubDelay=0 "
            "SubSpeed=1000 SubCharset=Western SubFace=Arial SubColor=16777215 SubTransparent=1 "
            "SubSize=36 SubWeight=500 SubXPos=50 SubYPos=8 OSDVideoTime=0 OSDWorldTime=0 "
            "OSDCharset=Western OSDFace=Arial OSDColor=16777215 OSDTransparent=1 OSDSize=24 "
            "OSDWeight=700 OSDXPos=94 OSDYPos=94 ");
  EXPECT_NEAR(loaded.aspectRatio, 1.3333f, 1e-4f);
  EXPECT_FALSE(std::filesystem::exists(folder_.path() / "registry.reg"));  // loading writes nothing
}

TEST_F(SettingsStoreTest, SavingAndLoadingReproducesEveryField) {
  Settings s{Settings::DefaultsOnly{}};
  s.LoadMode = 3, s.SysTrayIcon = 0, s.bOverscan = 1, s.Overscan = 30, s.bFill = 1, s.Fill = 50;
  s.bFillH = 1, s.FillH = 51, s.bFill2 = 0, s.TV = 1, s.Flip = 3, s.YShift = 1, s.FPSConv = 2;
  s.Economic = 1, s.Overlay = 1, s.AspectComp = 2, s.AspectComp2 = "16:9";
  s.Sub.SubPath = "/media/subs;~/x;C:\\old \"quoted\";\xE9t\xE9";
  s.Sub.SubLang =
      "Fran\xE7"
      "ais";
  s.Sub.SubDelay = -600000, s.Sub.SubSpeed = 5000;
  s.OSD.OSDVideoTime = 2, s.OSD.OSDWorldTime = 1;
  FontStyle& a = s.Sub.style;
  a.Size = 56, a.Weight = 900, a.Face = "DejaVu Sans", a.Charset = "Cyrillic", a.Color = 0x123456;
  a.Transparent = 0, a.XPos = 0, a.YPos = 100;
  FontStyle& b = s.OSD.style;
  b.Size = 16, b.Weight = 100, b.Face = "Liberation Mono", b.Charset = "Central European";
  b.Color = 0, b.Transparent = 0, b.XPos = 100, b.YPos = 0;
  ASSERT_EQ(s.SaveSettings(store_), 0);
  const Settings loaded(store_);
  EXPECT_EQ(Fields(loaded), Fields(s));
  EXPECT_NEAR(loaded.aspectRatio, 16.0f / 9.0f, 1e-6f);
  // Every field differs from its default, so none was silently defaulted.
  const auto defaults = Fields(Settings{Settings::DefaultsOnly{}});
  const auto saved = Fields(s);
  ASSERT_EQ(defaults.size(), saved.size());
  for (std::size_t i = 0; i < saved.size(); ++i)
    EXPECT_NE(saved[i].second, defaults[i].second) << saved[i].first;
}

TEST_F(SettingsStoreTest, SaveWritesTheValuesInOrderWithTheirTypes) {
  ASSERT_EQ(Settings{Settings::DefaultsOnly{}}.SaveSettings(store_), 0);
  const std::vector<std::string> expected = {
      "LoadMode",       "bFill",      "Fill",           "bFillH",     "FillH",       "bFill2",
      "bOverscan",      "Overscan",   "Flip",           "TV",         "Overlay",     "AspectComp",
      "AspectComp2",    "FPSConv",    "YShift",         "Economic",   "SysTrayIcon", "SubPath",
      "SubLang",        "SubDelay",   "SubSpeed",       "SubCharset", "SubSize",     "SubWeight",
      "SubFace",        "SubColor",   "SubTransparent", "SubXPos",    "SubYPos",     "OSDVideoTime",
      "OSDWorldTime",   "OSDCharset", "OSDSize",        "OSDWeight",  "OSDFace",     "OSDColor",
      "OSDTransparent", "OSDXPos",    "OSDYPos"};
  std::vector<std::string> names;
  for (const auto& [name, value] :
       store_.Values(RootKey::LocalMachine, "Software\\Vornik\\Korvalin")) {
    names.push_back(name);
    const bool text = name == "AspectComp2" || name == "SubPath" || name == "SubLang" ||
                      name.ends_with("Charset") || name.ends_with("Face");
    EXPECT_EQ(value.type, text ? platform::REG_SZ : platform::REG_DWORD) << name;
  }
  EXPECT_EQ(names, expected);
}

TEST_F(SettingsStoreTest, OutOfRangeOrOddValuesReadAsTheirDefaults) {
  const std::pair<const char*, int32_t> stored[] = {
      {"Overscan", 31}, {"SubSpeed", 0},    {"SubColor", 0x01000000},
      {"OSDColor", -1}, {"SubWeight", 250}, {"OSDWeight", 901},
      {"LoadMode", -1}, {"Fill", 49},       {"FillH", 50}};
  {
    RegistryStore::Batch batch(store_);
    for (const auto& [name, value] : stored) EXPECT_EQ(registry_.WriteInt(Path(name), value), 0);
    ASSERT_EQ(registry_.WriteString(Path("AspectComp2"), "wide"), 0);
    ASSERT_EQ(registry_.WriteString(Path("SubFace"), std::string(300, 'F')), 0);
    ASSERT_EQ(registry_.WriteString(Path("SubPath"), std::string(2000, 'p')), 0);
  }
  Settings s(store_);
  EXPECT_EQ(s.Overscan, 8);
  EXPECT_EQ(s.Sub.SubSpeed, 1000);
  EXPECT_EQ(s.Sub.style.Color, 0xFFFFFFu);
  EXPECT_EQ(s.OSD.style.Color, 0xFFFFFFu);
  EXPECT_EQ(s.Sub.style.Weight, 250);  // in range, kept
  EXPECT_EQ(s.OSD.style.Weight, 700);
  EXPECT_EQ(s.LoadMode, 0);
  EXPECT_EQ(s.Fill, 75);
  EXPECT_EQ(s.FillH, 50);
  EXPECT_EQ(s.AspectComp2, "wide");  // an invalid aspect text is kept with ratio zero
  EXPECT_EQ(s.aspectRatio, 0.0f);
  EXPECT_EQ(s.Sub.style.Face.view(), std::string(127, 'F'));  // long texts cut to the field
  EXPECT_EQ(s.Sub.SubPath.view(), std::string(1023, 'p'));
  for (const auto& [value, expected] : std::vector<std::pair<int32_t, int32_t>>{
           {-600000, -600000}, {600000, 600000}, {-600001, 0}, {600001, 0}, {INT32_MIN, 0}}) {
    ASSERT_EQ(registry_.WriteInt(Path("SubDelay"), value), 0);
    s.LoadSettings(store_);
    EXPECT_EQ(s.Sub.SubDelay, expected) << value;
  }
}

TEST_F(SettingsStoreTest, AnUnwritableStoreKeepsTheRecordAndReadsDefaults) {
  RegistryStore blocked(folder_.Write("plain", "x") / "registry.reg");
  Settings s{Settings::DefaultsOnly{}};
  s.Overscan = 20;
  EXPECT_EQ(s.SaveSettings(blocked), 0);  // silently skipped
  EXPECT_EQ(s.Overscan, 20);
  EXPECT_EQ(RegistryPath(blocked).WriteInt(Path("Overscan"), 1), -1);
  EXPECT_EQ(Settings(blocked).Overscan, 8);
}

TEST(RegistryPathParse, SplitsValidPaths) {
  RegistryStore store("/nonexistent-korvalin/registry.reg");
  struct Case {
    std::string path;
    RootKey root;
    std::string subKey, valueName;
  };
  const Case cases[] = {
      {"HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin\\SubFace", RootKey::LocalMachine,
       "Software\\Vornik\\Korvalin", "SubFace"},
      {"HKEY_CLASSES_ROOT\\CLSID\\{x}\\Inproc\\", RootKey::ClassesRoot, "CLSID\\{x}\\Inproc", ""},
      {"HKEY_CURRENT_USER\\Name", RootKey::CurrentUser, "", "Name"},
      {"HKEY_USERSXName", RootKey::Users, "", "Name"},  // any one separator character
      {"HKEY_LOCAL_MACHINE\\Soft/V\\a/b", RootKey::LocalMachine, "Soft/V", "a/b"},
      {"HKEY_LOCAL_MACHINE\\\\", RootKey::LocalMachine, "", ""},
      {"HKEY_USERS\\a\\b\0c\\d"s, RootKey::Users, "a", "b"},  // ends at the first zero byte
      {"HKEY_USERS\\" + std::string(1023, 'k') + "\\v", RootKey::Users, std::string(1023, 'k'),
       "v"},
      {"HKEY_USERS\\k\\" + std::string(127, 'v'), RootKey::Users, "k", std::string(127, 'v')},
  };
  for (const Case& c : cases) {
    RegistryPath path(store);
    ASSERT_EQ(path.Parse(c.path), 0) << c.path;
    EXPECT_EQ(path.root(), c.root) << c.path;
    EXPECT_EQ(path.subKey(), c.subKey) << c.path;
    EXPECT_EQ(path.valueName(), c.valueName) << c.path;
  }
}

TEST(RegistryPathParse, RejectsBareRootsUnknownRootsAndLongNames) {
  RegistryStore store("/nonexistent-korvalin/registry.reg");
  for (const std::string& bad :
       {"HKEY_LOCAL_MACHINE"s, "HKEY_LOCAL_MACHINE\\"s, "HKEY_USERS"s, "HKLM\\Software\\x"s,
        "hkey_local_machine\\Software\\x"s, "HKEY_Local_Machine\\Software\\x"s,
        "HKEY_CURRENT_CONFIG\\Software\\x"s, "HKEY_LOCAL\\x"s, " HKEY_LOCAL_MACHINE\\x"s, ""s,
        "HKEY_USERS\0\\a"s, "HKEY_USERS\\" + std::string(1024, 'k') + "\\v",
        "HKEY_USERS\\k\\" + std::string(128, 'v')}) {
    EXPECT_EQ(RegistryPath(store).Parse(bad), -1) << bad;
  }
}

TEST(FontStyleTable, CharsetValueLooksNamesUpWithoutLetterCase) {
  const std::string_view names[] = {
      "Western",          "Hebrew",   "Arabic",     "Greek", "Turkish", "Baltic",
      "Central European", "Cyrillic", "Vietnamese", "OEM",   "Mac",     "Hangeul"};
  const int32_t numbers[] = {0, 177, 178, 161, 162, 186, 238, 204, 163, 255, 77, 129};
  std::vector<std::pair<std::string_view, int32_t>> cases = {
      {"cyrillic", 204}, {"CYRILLIC", 204}, {"oem", 255},  {"Klingon", 0},
      {"", 0},           {"Cyrillic ", 0},  {"Central", 0}};
  for (int i = 0; i < 12; ++i) cases.emplace_back(names[i], numbers[i]);
  for (const auto& [name, number] : cases) {
    FontStyle style;
    style.Charset = name;
    EXPECT_EQ(style.CharsetValue(), number) << name;
  }
  ASSERT_EQ(CharsetTable().size(), 12u);
  for (int i = 0; i < 12; ++i) EXPECT_EQ(CharsetTable()[i].name, names[i]);
}

TEST(FontStyleTable, ScaledSizeDrawsAtThreeQuartersOn16By9) {
  const std::pair<int32_t, int32_t> cases[] = {{16, 12}, {56, 42}, {36, 27}, {24, 18},
                                               {17, 13}, {18, 14}, {19, 14}, {55, 41}};
  for (const auto& [size, scaled] : cases) {
    FontStyle style;
    style.Size = size;
    EXPECT_EQ(style.ScaledSize(1), scaled) << size;
    EXPECT_EQ(style.ScaledSize(0), size) << size;
    EXPECT_EQ(style.ScaledSize(2), size) << size;  // only shape 1 scales
  }
}

TEST(SettingsTable, ParseAspectRatio) {
  const std::pair<std::string_view, float> valid[] = {
      {"4:3", 4.0f / 3.0f}, {"16:9", 16.0f / 9.0f}, {"2.35:1", 2.35f},
      {"1:1", 1.0f},        {" 4: 3", 4.0f / 3.0f}, {"4:3junk", 4.0f / 3.0f}};
  for (const auto& [text, ratio] : valid) EXPECT_FLOAT_EQ(ParseAspectRatio(text), ratio) << text;
  for (std::string_view text : {"4 :3", "0:3", "4:0", "-4:3", "4:-3", "43", "4", "", ":3",
                                "4:", "a:b", "4/3", "1e39:1", "1:1e-39"})
    EXPECT_EQ(ParseAspectRatio(text), 0.0f) << text;
  EXPECT_EQ(ParseAspectRatio(std::string_view("16:9").substr(0, 3)), 0.0f);  // only the view
}

TEST(SettingsTable, SubtitleTimeScalesThenShifts) {
  const std::tuple<int32_t, int32_t, int32_t, int32_t> cases[] = {
      {0, 1000, 12345, 12345},
      {500, 1000, 12345, 11845},
      {-600000, 1000, 0, 600000},
      {0, 1001, 1000000, 1001000},
      {0, 1001, 500, 501},
      {0, 1001, -500, -501},
      {0, 1500, 1, 2},
      {0, 1500, -1, -2},
      {0, 1, 1499, 1},
      {0, 1, 499, 0},
      {100, 5000, 400000000, 1999999900}};
  Settings s{Settings::DefaultsOnly{}};
  for (const auto& [delay, speed, time, expected] : cases) {
    s.Sub.SubDelay = delay;
    s.Sub.SubSpeed = speed;
    EXPECT_EQ(s.SubtitleTime(time), expected) << delay << " " << speed << " " << time;
  }
}

TEST(SettingsTable, SourceFrameDurationFollowsFpsConv) {
  const std::tuple<int32_t, int32_t, int32_t> cases[] = {
      {0, 416666, 0}, {0, 333667, 0},      {1, 416666, 416666}, {1, 417083, 417083},
      {1, 400000, 0}, {1, 408163, 408163}, {1, 408162, 0},      {1, 425531, 425531},
      {1, 425532, 0}, {1, 333667, 0},      {2, 400000, 417083}, {2, 0, 417083},
      {3, 400000, 416666}, {4, 416666, 0}};
  Settings s{Settings::DefaultsOnly{}};
  for (const auto& [conv, duration, expected] : cases) {
    s.FPSConv = conv;
    EXPECT_EQ(s.SourceFrameDuration(duration), expected) << conv << " " << duration;
  }
}

}  // namespace
}  // namespace korvalin
