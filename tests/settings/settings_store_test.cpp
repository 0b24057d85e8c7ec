#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/registry_store.h"
#include "settings/registry_path.h"
#include "settings/setting_fields.h"
#include "settings/settings.h"

namespace korvalin {
namespace {

namespace fs = std::filesystem;
using platform::RegistryStore;
using platform::RegistryValue;
using platform::RootKey;
using namespace std::string_literals;

constexpr std::string_view kSub = "Software\\Vornik\\Korvalin";

std::string Path(std::string_view name) {
  return std::string(kSettingsKeyPath) + "\\" + std::string(name);
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
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
  static fs::path MakeFolder() {
    std::string pattern = (fs::temp_directory_path() / "korvalin-settings-XXXXXX").string();
    return ::mkdtemp(pattern.data());
  }
  ~SettingsStoreTest() override {
    std::error_code ec;
    fs::remove_all(folder_, ec);
  }
  fs::path File() const { return folder_ / "registry.reg"; }

  fs::path folder_ = MakeFolder();
  RegistryStore store_{folder_ / "registry.reg"};
};

TEST_F(SettingsStoreTest, AnEmptyStoreGivesExactlyTheDefaults) {
  const Settings loaded(store_);
  const Settings defaults{Settings::DefaultsOnly{}};
  EXPECT_EQ(Fields(loaded), Fields(defaults));
  EXPECT_EQ(loaded.Sub.SubPath, "~/.local/share/korvalin/subtitles;.");
  EXPECT_EQ(loaded.Sub.SubLang, "English");
  EXPECT_EQ(loaded.AspectComp2, "4:3");
  EXPECT_NEAR(loaded.aspectRatio, 1.3333f, 1e-4f);
  EXPECT_EQ(loaded.LoadMode, 0);
  EXPECT_EQ(loaded.SysTrayIcon, 1);
  EXPECT_EQ(loaded.Overscan, 8);
  EXPECT_EQ(loaded.Fill, 75);
  EXPECT_EQ(loaded.FillH, 100);
  EXPECT_EQ(loaded.bFill2, 1);
  EXPECT_EQ(loaded.Sub.SubDelay, 0);
  EXPECT_EQ(loaded.Sub.SubSpeed, 1000);
  const FontStyle& sub = loaded.Sub.style;
  EXPECT_EQ(sub.Face, "Arial");
  EXPECT_EQ(sub.Charset, "Western");
  EXPECT_EQ(sub.Color, 0xFFFFFFu);
  EXPECT_EQ(sub.Transparent, 1);
  EXPECT_EQ(sub.Size, 36);
  EXPECT_EQ(sub.Weight, 500);
  EXPECT_EQ(sub.XPos, 50);
  EXPECT_EQ(sub.YPos, 8);
  const FontStyle& osd = loaded.OSD.style;
  EXPECT_EQ(osd.Size, 24);
  EXPECT_EQ(osd.Weight, 700);
  EXPECT_EQ(osd.XPos, 94);
  EXPECT_EQ(osd.YPos, 94);
  EXPECT_EQ(loaded.OSD.OSDVideoTime, 0);
  EXPECT_EQ(loaded.OSD.OSDWorldTime, 0);
  EXPECT_FALSE(fs::exists(File()));  // loading writes nothing
}

TEST_F(SettingsStoreTest, SavingAndLoadingReproducesEveryField) {
  Settings s{Settings::DefaultsOnly{}};
  s.LoadMode = 3;
  s.SysTrayIcon = 0;
  s.bOverscan = 1;
  s.Overscan = 30;
  s.bFill = 1;
  s.Fill = 50;
  s.bFillH = 1;
  s.FillH = 51;
  s.bFill2 = 0;
  s.TV = 1;
  s.Flip = 3;
  s.YShift = 1;
  s.FPSConv = 2;
  s.Economic = 1;
  s.Overlay = 1;
  s.AspectComp = 2;
  s.AspectComp2 = "16:9";
  s.Sub.SubPath = "/media/subs;~/x;C:\\old \"quoted\";\xE9t\xE9";
  s.Sub.SubLang =
      "Fran\xE7"
      "ais";
  s.Sub.SubDelay = -600000;
  s.Sub.SubSpeed = 5000;
  s.Sub.style.Size = 56;
  s.Sub.style.Weight = 900;
  s.Sub.style.Face = "DejaVu Sans";
  s.Sub.style.Charset = "Cyrillic";
  s.Sub.style.Color = 0x123456;
  s.Sub.style.Transparent = 0;
  s.Sub.style.XPos = 0;
  s.Sub.style.YPos = 100;
  s.OSD.OSDVideoTime = 2;
  s.OSD.OSDWorldTime = 1;
  s.OSD.style.Size = 16;
  s.OSD.style.Weight = 100;
  s.OSD.style.Face = "Liberation Mono";
  s.OSD.style.Charset = "Central European";
  s.OSD.style.Color = 0;
  s.OSD.style.Transparent = 0;
  s.OSD.style.XPos = 100;
  s.OSD.style.YPos = 0;
  ASSERT_EQ(s.SaveSettings(store_), 0);

  const Settings loaded(store_);
  EXPECT_EQ(Fields(loaded), Fields(s));
  EXPECT_NEAR(loaded.aspectRatio, 16.0f / 9.0f, 1e-6f);

  // Every field differs from its default, so none was silently defaulted.
  const auto defaults = Fields(Settings{Settings::DefaultsOnly{}});
  const auto saved = Fields(s);
  ASSERT_EQ(defaults.size(), saved.size());
  for (std::size_t i = 0; i < saved.size(); ++i) {
    EXPECT_NE(saved[i].second, defaults[i].second) << saved[i].first;
  }
}

TEST_F(SettingsStoreTest, SaveWritesTheValuesInThePartsOrderWithTheirTypes) {
  const Settings s{Settings::DefaultsOnly{}};
  ASSERT_EQ(s.SaveSettings(store_), 0);
  const std::vector<std::string> expected = {
      "LoadMode",       "bFill",      "Fill",           "bFillH",     "FillH",       "bFill2",
      "bOverscan",      "Overscan",   "Flip",           "TV",         "Overlay",     "AspectComp",
      "AspectComp2",    "FPSConv",    "YShift",         "Economic",   "SysTrayIcon", "SubPath",
      "SubLang",        "SubDelay",   "SubSpeed",       "SubCharset", "SubSize",     "SubWeight",
      "SubFace",        "SubColor",   "SubTransparent", "SubXPos",    "SubYPos",     "OSDVideoTime",
      "OSDWorldTime",   "OSDCharset", "OSDSize",        "OSDWeight",  "OSDFace",     "OSDColor",
      "OSDTransparent", "OSDXPos",    "OSDYPos"};
  std::vector<std::string> names;
  for (const auto& [name, value] : store_.Values(RootKey::LocalMachine, kSub)) {
    names.push_back(name);
    const bool text = name == "AspectComp2" || name == "SubPath" || name == "SubLang" ||
                      name.ends_with("Charset") || name.ends_with("Face");
    EXPECT_EQ(value.type, text ? platform::REG_SZ : platform::REG_DWORD) << name;
  }
  EXPECT_EQ(names, expected);

  // And so in the file, one line each, in that order.
  const std::string text = ReadFile(File());
  std::size_t last = 0;
  for (const std::string& name : expected) {
    const auto at = text.find("\n\"" + name + "\"=");
    ASSERT_NE(at, std::string::npos) << name;
    EXPECT_GT(at, last) << name;
    last = at;
  }
  EXPECT_NE(text.find("\n\"SubPath\"=\"~/.local/share/korvalin/subtitles;.\"\n"),
            std::string::npos);
  EXPECT_NE(text.find("\n\"SubColor\"=dword:00ffffff\n"), std::string::npos);
}

TEST_F(SettingsStoreTest, OutOfRangeValuesReadAsTheirDefaults) {
  RegistryPath registry(store_);
  {
    RegistryStore::Batch batch(store_);
    EXPECT_EQ(registry.WriteInt(Path("Overscan"), 31), 0);
    EXPECT_EQ(registry.WriteInt(Path("SubSpeed"), 0), 0);
    EXPECT_EQ(registry.WriteInt(Path("SubColor"), 0x01000000), 0);
    EXPECT_EQ(registry.WriteInt(Path("OSDColor"), -1), 0);
    EXPECT_EQ(registry.WriteInt(Path("SubWeight"), 250), 0);
    EXPECT_EQ(registry.WriteInt(Path("OSDWeight"), 901), 0);
    EXPECT_EQ(registry.WriteInt(Path("LoadMode"), -1), 0);
    EXPECT_EQ(registry.WriteInt(Path("Fill"), 49), 0);
    EXPECT_EQ(registry.WriteInt(Path("FillH"), 50), 0);
  }
  Settings s(store_);
  EXPECT_EQ(s.Overscan, 8);
  EXPECT_EQ(s.Sub.SubSpeed, 1000);
  EXPECT_EQ(s.Sub.style.Color, 0xFFFFFFu);
  EXPECT_EQ(s.OSD.style.Color, 0xFFFFFFu);
  EXPECT_EQ(s.Sub.style.Weight, 250);  // in range, kept though the page can't show it
  EXPECT_EQ(s.OSD.style.Weight, 700);
  EXPECT_EQ(s.LoadMode, 0);
  EXPECT_EQ(s.Fill, 75);
  EXPECT_EQ(s.FillH, 50);

  for (const auto& [stored, expected] : std::vector<std::pair<int32_t, int32_t>>{
           {-600000, -600000}, {600000, 600000}, {-600001, 0}, {600001, 0}, {INT32_MIN, 0}}) {
    ASSERT_EQ(registry.WriteInt(Path("SubDelay"), stored), 0);
    s.LoadSettings(store_);
    EXPECT_EQ(s.Sub.SubDelay, expected) << stored;
  }
}

TEST_F(SettingsStoreTest, AnInvalidAspectTextIsKeptWithRatioZero) {
  RegistryPath registry(store_);
  ASSERT_EQ(registry.WriteString(Path("AspectComp2"), "wide"), 0);
  const Settings s(store_);
  EXPECT_EQ(s.AspectComp2, "wide");
  EXPECT_EQ(s.aspectRatio, 0.0f);
}

TEST_F(SettingsStoreTest, StoredTypesAreNotChecked) {
  RegistryPath registry(store_);
  // A text read as an integer: its first four bytes, little-endian.
  ASSERT_EQ(registry.WriteString(Path("Num"), "\x05"), 0);  // 05 00: too short
  EXPECT_EQ(registry.ReadInt(Path("Num"), 7, 0, 1000), 7);
  ASSERT_EQ(registry.WriteString(Path("Num"), "\x05\x01\x02"), 0);  // 05 01 02 00
  EXPECT_EQ(registry.ReadInt(Path("Num"), 7, 0, 0x7FFFFFFF), 0x020105);
  // Binary data of three bytes is missing; five bytes use the first four.
  const uint8_t five[5] = {1, 0, 0, 0, 9};
  ASSERT_EQ(registry.Write(Path("Bin"), five, 3, platform::REG_BINARY), 0);
  EXPECT_EQ(registry.ReadInt(Path("Bin"), 7, 0, 100), 7);
  ASSERT_EQ(registry.Write(Path("Bin"), five, 5, platform::REG_BINARY), 0);
  EXPECT_EQ(registry.ReadInt(Path("Bin"), 7, 0, 100), 1);
  // Negative and bounds are signed and inclusive.
  ASSERT_EQ(registry.WriteInt(Path("Neg"), -5), 0);
  EXPECT_EQ(registry.ReadInt(Path("Neg"), 3, -5, 0), -5);
  EXPECT_EQ(registry.ReadInt(Path("Neg"), 3, -4, 0), 3);
  // An integer read as a text: up to its first zero byte.
  ASSERT_EQ(registry.WriteInt(Path("Neg"), 0x00434241), 0);
  EXPECT_EQ(registry.ReadText(Path("Neg"), "def"), "ABC");
  // Text data without a terminator is taken whole; an inner zero ends it.
  ASSERT_EQ(registry.Write(Path("T"), "abc", 3, platform::REG_SZ), 0);
  EXPECT_EQ(registry.ReadText(Path("T"), "def"), "abc");
  ASSERT_EQ(registry.Write(Path("T"), "ab\0cd", 6, platform::REG_SZ), 0);
  EXPECT_EQ(registry.ReadText(Path("T"), "def"), "ab");
  ASSERT_EQ(registry.Write(Path("T"), nullptr, 0, platform::REG_SZ), 0);
  EXPECT_EQ(registry.ReadText(Path("T"), "def"), "");
  EXPECT_EQ(registry.ReadText(Path("Missing"), "def"), "def");
}

TEST_F(SettingsStoreTest, ReadAndWriteHandOutTheDataAndType) {
  RegistryPath registry(store_);
  ASSERT_EQ(registry.WriteString(Path("SubLang"), "German"), 0);
  const uint8_t* data = nullptr;
  uint32_t size = 0, type = 0;
  ASSERT_EQ(registry.Read(Path("SubLang"), &data, &size, &type), 0);
  EXPECT_EQ(type, platform::REG_SZ);
  ASSERT_EQ(size, 7u);  // length + 1
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(data), size), std::string("German\0", 7));
  ASSERT_EQ(registry.WriteInt(Path("Overscan"), 0x01020304), 0);
  ASSERT_EQ(registry.Read(Path("Overscan"), &data, &size, &type), 0);
  EXPECT_EQ(type, platform::REG_DWORD);
  ASSERT_EQ(size, 4u);
  EXPECT_EQ(data[0], 4);
  EXPECT_EQ(data[3], 1);
  EXPECT_EQ(registry.Read(Path("Nothing"), &data, &size, &type), -1);
  EXPECT_EQ(registry.Read("HKLM\\x", &data, &size, &type), -1);
  // A value directly under the root key.
  ASSERT_EQ(registry.WriteInt("HKEY_CURRENT_USER\\Top", 9), 0);
  EXPECT_EQ(*store_.Query(RootKey::CurrentUser, "", "Top"),
            (RegistryValue{platform::REG_DWORD, {9, 0, 0, 0}}));
  EXPECT_EQ(registry.ReadInt("HKEY_CURRENT_USER\\Top", 0, 0, 100), 9);
  // Value names compare without regard to letter case.
  EXPECT_EQ(registry.ReadText("HKEY_LOCAL_MACHINE\\software\\vornik\\korvalin\\SUBLANG", ""),
            "German");
}

TEST_F(SettingsStoreTest, LongTextsAreCutToTheirFields) {
  RegistryPath registry(store_);
  const std::string longFace(300, 'F');
  const std::string longPath(2000, 'p');
  ASSERT_EQ(registry.WriteString(Path("SubFace"), longFace), 0);
  ASSERT_EQ(registry.WriteString(Path("SubPath"), longPath), 0);
  const Settings s(store_);
  EXPECT_EQ(s.Sub.style.Face.view(), std::string(127, 'F'));
  EXPECT_EQ(s.Sub.SubPath.view(), std::string(1023, 'p'));
}

TEST_F(SettingsStoreTest, AnUnwritableStoreKeepsTheRecordAndReadsDefaults) {
  std::ofstream(folder_ / "plain") << "x";
  RegistryStore blocked(folder_ / "plain" / "registry.reg");
  Settings s{Settings::DefaultsOnly{}};
  s.Overscan = 20;
  EXPECT_EQ(s.SaveSettings(blocked), 0);  // silently skipped
  EXPECT_EQ(s.Overscan, 20);
  RegistryPath registry(blocked);
  EXPECT_EQ(registry.WriteInt(Path("Overscan"), 1), -1);
  EXPECT_EQ(Settings(blocked).Overscan, 8);
}

TEST_F(SettingsStoreTest, AnotherProcessesValuesSurviveASave) {
  RegistryStore other(File());
  RegistryPath otherPath(other);
  ASSERT_EQ(otherPath.WriteInt("HKEY_LOCAL_MACHINE\\Software\\Other\\Keep", 1), 0);
  ASSERT_EQ(otherPath.WriteString(Path("Unknown"), "stays"), 0);
  Settings s{Settings::DefaultsOnly{}};
  ASSERT_EQ(s.SaveSettings(store_), 0);
  EXPECT_EQ(otherPath.ReadInt("HKEY_LOCAL_MACHINE\\Software\\Other\\Keep", 0, 0, 1), 1);
  EXPECT_EQ(otherPath.ReadText(Path("Unknown"), ""), "stays");
}

// ---------------------------------------------------------------------------------------------
// Path parsing

struct ParseCase {
  std::string path;
  int result;
  RootKey root = RootKey::LocalMachine;
  std::string subKey;
  std::string valueName;
};

TEST(RegistryPathParse, SplitsAndRejectsAsThePartSays) {
  RegistryStore store("/nonexistent-korvalin/registry.reg");
  const std::vector<ParseCase> cases = {
      {"HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin\\SubFace", 0, RootKey::LocalMachine,
       "Software\\Vornik\\Korvalin", "SubFace"},
      {"HKEY_CLASSES_ROOT\\CLSID\\{x}\\InprocServer32\\", 0, RootKey::ClassesRoot,
       "CLSID\\{x}\\InprocServer32", ""},
      {"HKEY_CURRENT_USER\\Name", 0, RootKey::CurrentUser, "", "Name"},
      {"HKEY_USERS\\a\\b", 0, RootKey::Users, "a", "b"},
      // The separator is skipped unexamined: any one character will do.
      {"HKEY_USERS/a\\b", 0, RootKey::Users, "a", "b"},
      {"HKEY_USERSXName", 0, RootKey::Users, "", "Name"},
      // Only backslashes split; "/" is part of a name.
      {"HKEY_LOCAL_MACHINE\\Software/Vornik\\a/b", 0, RootKey::LocalMachine, "Software/Vornik",
       "a/b"},
      // The rest may be a lone backslash: empty sub-key, the unnamed value.
      {"HKEY_LOCAL_MACHINE\\\\", 0, RootKey::LocalMachine, "", ""},
      {"HKEY_LOCAL_MACHINE\\x", 0, RootKey::LocalMachine, "", "x"},
      // A path that is only a root name, or the root and its separator, is rejected.
      {"HKEY_LOCAL_MACHINE", -1, RootKey::LocalMachine, "", ""},
      {"HKEY_LOCAL_MACHINE\\", -1, RootKey::LocalMachine, "", ""},
      {"HKEY_USERS", -1, RootKey::LocalMachine, "", ""},
      // Abbreviated, lower-case or unknown roots are rejected; so is an empty path.
      {"HKLM\\Software\\x", -1, RootKey::LocalMachine, "", ""},
      {"hkey_local_machine\\Software\\x", -1, RootKey::LocalMachine, "", ""},
      {"HKEY_Local_Machine\\Software\\x", -1, RootKey::LocalMachine, "", ""},
      {"HKEY_CURRENT_CONFIG\\Software\\x", -1, RootKey::LocalMachine, "", ""},
      {"HKEY_LOCAL\\x", -1, RootKey::LocalMachine, "", ""},
      {" HKEY_LOCAL_MACHINE\\x", -1, RootKey::LocalMachine, "", ""},
      {"", -1, RootKey::LocalMachine, "", ""},
      // A path ends at its first zero byte, as a C string does.
      {"HKEY_USERS\\a\\b\0c\\d"s, 0, RootKey::Users, "a", "b"},
      {"HKEY_USERS\0\\a"s, -1, RootKey::LocalMachine, "", ""},
      // Names longer than the record's fields are rejected.
      {"HKEY_USERS\\" + std::string(1023, 'k') + "\\v", 0, RootKey::Users, std::string(1023, 'k'),
       "v"},
      {"HKEY_USERS\\" + std::string(1024, 'k') + "\\v", -1, RootKey::LocalMachine, "", ""},
      {"HKEY_USERS\\k\\" + std::string(127, 'v'), 0, RootKey::Users, "k", std::string(127, 'v')},
      {"HKEY_USERS\\k\\" + std::string(128, 'v'), -1, RootKey::LocalMachine, "", ""},
  };
  for (const ParseCase& c : cases) {
    RegistryPath path(store);
    EXPECT_EQ(path.Parse(c.path), c.result) << c.path;
    if (c.result != 0) continue;
    EXPECT_EQ(path.root(), c.root) << c.path;
    EXPECT_EQ(path.subKey(), c.subKey) << c.path;
    EXPECT_EQ(path.valueName(), c.valueName) << c.path;
  }
}

TEST(RegistryPathParse, UnparseablePathsFailWritesAndDefaultReads) {
  std::string pattern = (fs::temp_directory_path() / "korvalin-path-XXXXXX").string();
  const fs::path folder = ::mkdtemp(pattern.data());
  {
    RegistryStore store(folder / "registry.reg");
    RegistryPath path(store);
    EXPECT_EQ(path.WriteInt("HKLM\\Software\\x", 1), -1);
    EXPECT_EQ(path.WriteString("HKEY_LOCAL_MACHINE", "x"), -1);
    EXPECT_EQ(path.WriteInt("HKEY_USERS\\k\\" + std::string(128, 'v'), 1), -1);
    EXPECT_EQ(path.ReadInt("HKLM\\Software\\x", 5, 0, 10), 5);
    EXPECT_EQ(path.ReadText("HKEY_LOCAL_MACHINE", "d"), "d");
    EXPECT_FALSE(fs::exists(folder / "registry.reg"));
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace korvalin
