#include "host/class_registration.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "host/module_loader.h"
#include "host/registry_values.h"
#include "support/temp_folder.h"
#include "test_filters.h"

namespace korvalin::host::testing {
namespace {

using platform::ParseRegedit;
using platform::RegistryStore;
using platform::RootKey;

constexpr CLSID kFilterA = MakeGuid("11111111-0000-4000-8000-0000000000A1");
constexpr CLSID kFilterB = MakeGuid("11111111-0000-4000-8000-0000000000B2");
constexpr CLSID kFilterC = MakeGuid("11111111-0000-4000-8000-0000000000C3");
constexpr CLSID kPage = MakeGuid("11111111-0000-4000-8000-0000000000D4");
constexpr const char* kModule = "/opt/korvalin/libtest.so";

FactoryTemplate Filter(const CLSID& clsid, std::u16string name, uint32_t merit,
                       GUID major = MEDIATYPE_Video) {
  const REGFILTERPINS input{
      u"In", false,     false,  true,
      false, GUID_NULL, u"Out", {{major, MEDIASUBTYPE_YUY2}, {major, GUID_NULL}}};
  const REGFILTERPINS output{u"Out", true, true, false, true, kFilterC, u"In", {}};
  return {std::move(name), clsid, {}, true, merit, {input, output}};
}

class ClassRegistrationTest : public ::testing::Test {
 protected:
  std::string Text() const {
    std::ifstream in(folder_.path() / "registry.reg", std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  korvalin::testing::TempFolder folder_;
  RegistryStore store_{folder_.path() / "registry.reg"};
  const FactoryTemplate filter_ = Filter(kFilterA, u"Test Filter", MERIT_NORMAL);
  const FactoryTemplate page_{u"Test Page", kPage, {}, false, MERIT_DO_NOT_USE, {}};
};

TEST_F(ClassRegistrationTest, ClassesReadBackAndUnregisteringLeavesWhatWasThere) {
  store_.Set(RootKey::LocalMachine, "Software\\Vornik\\Korvalin", "Overscan", DwordValue(15));
  store_.Set(RootKey::ClassesRoot, ClassKey(kFilterB), "", TextValue("Someone else's"));
  const std::string before = Text();

  ASSERT_EQ(RegisterInStore(store_, {filter_, page_}, kModule), S_OK);
  EXPECT_NE(Text().find("[HKEY_CLASSES_ROOT\\CLSID\\{083863F1-70DE-11D0-BD40-00A0C911CE86}"
                        "\\Instance\\{11111111-0000-4000-8000-0000000000A1}]\n"
                        "\"FriendlyName\"=\"Test Filter\"\n"
                        "\"CLSID\"=\"{11111111-0000-4000-8000-0000000000A1}\"\n"
                        "\"Merit\"=dword:00600000\n"),
            std::string::npos);
  const auto filter = ReadStoredClass(store_, kFilterA);
  ASSERT_TRUE(filter);
  EXPECT_EQ(filter->name, u"Test Filter");
  EXPECT_EQ(filter->modulePath, kModule);
  EXPECT_EQ(filter->threadingModel, "Both");
  EXPECT_EQ(filter->filter, FilterDataOf(filter_));
  const auto page = ReadStoredClass(store_, kPage);
  ASSERT_TRUE(page);
  EXPECT_EQ(page->name, u"Test Page");
  EXPECT_FALSE(page->filter);
  const auto filters = ReadStoredFilters(store_);
  ASSERT_EQ(filters.size(), 1u);
  EXPECT_EQ(filters[0].modulePath, kModule);

  ASSERT_EQ(UnregisterFromStore(store_, {filter_, page_}), S_OK);
  EXPECT_EQ(ParseRegedit(Text()).document, ParseRegedit(before).document);
  EXPECT_FALSE(ReadStoredClass(store_, kPage));

  RegistryStore blocked(folder_.Write("plain", "x") / "registry.reg");
  EXPECT_EQ(RegisterInStore(blocked, {filter_}, kModule), E_FAIL);
}

TEST_F(ClassRegistrationTest, HandEditedEntriesThatDoNotMakeSenseAreSkipped) {
  const std::string key = FilterDataKey(kFilterA), pin0 = key + "\\Pins\\0";
  const struct {
    std::string key, name;
    platform::RegistryValue value;
    std::vector<std::u16string> pins;  // of the one filter kept; empty: none kept
    std::size_t inputTypes = 2;
  } cases[] = {
      {key, "CLSID", TextValue("x"), {}},
      {key, "CLSID", TextValue(ToString(kFilterB)), {}},
      {key, "Merit", TextValue("9"), {}},
      {ClassKey(kFilterA) + "\\InprocServer32", "", TextValue("a.so"), {}},
      {pin0, "Output", DwordValue(2), {u"Out"}},
      {pin0, "Name", DwordValue(1), {u"Out"}},
      {key + "\\Pins\\x", "Name", TextValue("X"), {u"In", u"Out"}},
      {key + "\\Pins\\07", "Name", TextValue("Late"), {u"In", u"Out", u"Late"}},
      {pin0 + "\\Types\\1", "Major", TextValue("{}"), {u"In", u"Out"}, 1},
      {key + "X", "FriendlyName", TextValue("X"), {u"In", u"Out"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key + " " + c.name);
    std::filesystem::remove(folder_.path() / "registry.reg");
    ASSERT_EQ(RegisterInStore(store_, {filter_}, kModule), S_OK);
    store_.Set(RootKey::ClassesRoot, c.key, c.name, c.value);
    const auto filters = ReadStoredFilters(store_);
    ASSERT_EQ(filters.size(), c.pins.empty() ? 0u : 1u);
    if (c.pins.empty()) continue;
    std::vector<std::u16string> pins;
    for (const REGFILTERPINS& pin : filters[0].data.pins) pins.push_back(pin.strName);
    EXPECT_EQ(pins, c.pins);
    if (pins[0] == u"In") {
      EXPECT_EQ(filters[0].data.pins[0].lpMediaType.size(), c.inputTypes);
    }
  }
}

TEST_F(ClassRegistrationTest, StoreAndInProcessFiltersGoByMeritInProcessFirstAmongEquals) {
  FilterRegistry registry([this] { return &store_; });
  FactoryTemplate inProcess = Filter(kFilterA, u"A in-process", MERIT_NORMAL);
  inProcess.create = [](IUnknown*, const IID& iid, void** out) {
    return MakeCom<AddOneFilter>()->QueryInterface(iid, out);
  };
  registry.Register(inProcess);
  ASSERT_EQ(RegisterInStore(
                store_,
                {Filter(kFilterB, u"B", MERIT_NORMAL), Filter(kFilterC, u"C", MERIT_PREFERRED),
                 Filter(kFilterA, u"A stored", MERIT_PREFERRED),
                 Filter(kPage, u"Never picked", MERIT_DO_NOT_USE),
                 Filter(MakeGuid("11111111-0000-4000-8000-0000000000E5"), u"Audio", MERIT_PREFERRED,
                        MEDIATYPE_Audio)},
                "/nonexistent/libkorvalin-test.so"),
            S_OK);
  std::vector<std::u16string> names;
  for (const FactoryTemplate& entry : registry.FiltersAccepting({VideoType()}))
    names.push_back(entry.name);
  EXPECT_EQ(names, (std::vector<std::u16string>{u"C", u"A in-process", u"B"}));

  ComPtr<IBaseFilter> made;
  EXPECT_EQ(registry.CreateInstance(kFilterA, nullptr, IBaseFilter::kIid,
                                    reinterpret_cast<void**>(made.ReleaseAndGetAddressOf())),
            S_OK);
  void* raw = &raw;
  EXPECT_EQ(registry.CreateInstance(kFilterB, nullptr, IBaseFilter::kIid, &raw), CO_E_DLLNOTFOUND);
  EXPECT_EQ(raw, nullptr);
  EXPECT_EQ(FilterRegistry().CreateInstance(kFilterB, nullptr, IBaseFilter::kIid, &raw),
            REGDB_E_CLASSNOTREG);
  EXPECT_EQ(registry.CreateInstance(kSourceClsid, nullptr, IBaseFilter::kIid, &raw),
            REGDB_E_CLASSNOTREG);
}

TEST(ModuleLoader, ModulesThatCannotLoadSayWhy) {
  korvalin::testing::TempFolder folder;
  const std::string missing = (folder.path() / "libmissing.so").string();
  const std::string garbage = folder.Write("libgarbage.so", "not a library").string();
  std::string error;
  EXPECT_EQ(RunModuleExport(missing, "DllRegisterServer", &error), CO_E_DLLNOTFOUND);
  EXPECT_NE(error.find("libmissing.so"), std::string::npos) << error;
  error.clear();
  void* out = &out;
  EXPECT_EQ(CreateFromModule(garbage, kFilterA, nullptr, IID_IUnknown, &out, &error),
            CO_E_DLLNOTFOUND);
  EXPECT_EQ(out, nullptr);
  EXPECT_NE(error.find("libgarbage.so"), std::string::npos) << error;
  EXPECT_EQ(RunModuleExport("", "DllRegisterServer", &error), CO_E_DLLNOTFOUND);
}

}  // namespace
}  // namespace korvalin::host::testing
