// The built libkorvalin.so, loaded as a host loads it, against a registry store of its own.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "filter/filter_harness.h"
#include "host/class_factory.h"
#include "host/class_registration.h"
#include "host/module_loader.h"
#include "host/property_page_interfaces.h"
#include "host/registry_values.h"
#include "module/class_table.h"
#include "module/stored_classes.h"
#include "support/temp_folder.h"

namespace korvalin::testing {
namespace {

using platform::RegistryStore;
using platform::RootKey;

const std::string kModule = KORVALIN_MODULE;
constexpr CLSID kVideoFilter = MakeGuid("9D2935C7-3D8B-4EF6-B0D1-C14064698794");
constexpr CLSID kLoaderFilter = MakeGuid("8CE3343E-2289-4BAE-AE57-5106A40AF552");

// The class-factory table as published.
const struct {
  std::u16string name;
  CLSID clsid;
  bool filter;
} kClasses[] = {
    {u"Korvalin", kVideoFilter, true},
    {u"Korvalin Picture", MakeGuid("37D5AC6C-DB82-4D83-8A70-B8FF0F1CB7C9"), false},
    {u"Korvalin Subtitle", MakeGuid("EB080B36-848F-4B75-B0C3-59B12D21F00D"), false},
    {u"Korvalin OSD", MakeGuid("F130D39A-3AD8-42E1-A905-54625636AB6A"), false},
    {u"Korvalin About", MakeGuid("A4466C61-2385-4070-9FB4-060AA2FCB465"), false},
    {u"KorvalinForce", kLoaderFilter, true},
};

REGFILTERPINS Pin(std::u16string name, bool output, std::u16string to, GUID major, GUID minor) {
  return {std::move(name), false, output, false, false, GUID_NULL, std::move(to), {{major, minor}}};
}

// Takes over the reference of a `Interface*` handed out through void**.
template <class Interface>
ComPtr<IUnknown> Identity(void* raw) {
  ComPtr<Interface> held;
  held.Attach(static_cast<Interface*>(raw));
  return QueryAs<IUnknown>(held.Get());
}

class ModuleTest : public ::testing::Test {
 protected:
  ModuleTest() { ::setenv("KORVALIN_REGISTRY", file_.c_str(), 1); }
  ~ModuleTest() override { ::unsetenv("KORVALIN_REGISTRY"); }

  static HRESULT Run(const char* entry) {
    std::string error;
    const HRESULT hr = RunModuleExport(kModule, entry, &error);
    EXPECT_EQ(error, "");
    return hr;
  }
  static HRESULT CanUnloadNow() { return Run("DllCanUnloadNow"); }
  static HRESULT ClassObject(const CLSID& clsid, ComPtr<IClassFactory>* factory) {
    const auto get = reinterpret_cast<DllGetClassObjectFunction>(
        FindModuleExport(kModule, "DllGetClassObject", nullptr));
    return get(clsid, IClassFactory::kIid,
               reinterpret_cast<void**>(factory->ReleaseAndGetAddressOf()));
  }
  std::string Text() const {
    std::ifstream in(file_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  static RegistryStore& Store() { return RegistryStore::Process(); }

  TempFolder folder_;
  const std::string file_ = (folder_.path() / "registry.reg").string();
};

TEST_F(ModuleTest, RegistrationWritesEveryClassAndUnregistrationRemovesExactlyThat) {
  Store().Set(RootKey::LocalMachine, "Software\\Vornik\\Korvalin", "Overscan", DwordValue(8));
  Store().Set(RootKey::ClassesRoot, "CLSID\\{00000000-0000-0000-0000-0000000000AA}", "",
              TextValue("Another class"));
  const std::string before = Text();

  ASSERT_EQ(Run("DllRegisterServer"), S_OK);
  const auto states = StoredModuleClasses(Store());
  ASSERT_EQ(states.size(), std::size(kClasses));
  for (std::size_t i = 0; i < states.size(); ++i) {
    const auto& c = kClasses[i];
    EXPECT_EQ(states[i].entry->clsid, c.clsid);
    const auto& stored = states[i].stored;
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->name, c.name);
    EXPECT_EQ(stored->modulePath, std::filesystem::absolute(kModule).lexically_normal());
    EXPECT_EQ(stored->threadingModel, "Both");
    EXPECT_EQ(stored->filter.has_value(), c.filter);
  }
  const FilterData video{kVideoFilter,
                         u"Korvalin",
                         0x900000,
                         {Pin(u"Input", false, u"Output", MEDIATYPE_Video, MEDIASUBTYPE_YUY2),
                          Pin(u"Output", true, u"Input", MEDIATYPE_Video, GUID_NULL)}};
  const FilterData loader{kLoaderFilter,
                          u"KorvalinForce",
                          0x900000,
                          {Pin(u"Input", false, u"", GUID_NULL, GUID_NULL),
                           Pin(u"Output", true, u"", GUID_NULL, GUID_NULL)}};
  EXPECT_EQ(ReadFilterData(Store(), kVideoFilter), video);
  EXPECT_EQ(ReadFilterData(Store(), kLoaderFilter), loader);
  ASSERT_EQ(Run("DllRegisterServer"), S_OK);  // again: the same entries, none twice
  EXPECT_EQ(ReadAllFilterData(Store()).size(), 2u);

  ASSERT_EQ(Run("DllUnregisterServer"), S_OK);
  EXPECT_EQ(platform::ParseRegedit(Text()).document, platform::ParseRegedit(before).document);
  EXPECT_FALSE(StoredModuleClasses(Store())[0].stored);

  const std::string blocked = folder_.Write("plain", "x").string() + "/registry.reg";
  ::setenv("KORVALIN_REGISTRY", blocked.c_str(), 1);
  EXPECT_EQ(Run("DllRegisterServer"), E_FAIL);
  std::string error;
  EXPECT_EQ(RunModuleExport(kModule, "NoSuchExport", &error), CO_E_ERRORINDLL);
  EXPECT_NE(error.find("NoSuchExport"), std::string::npos) << error;
}

TEST_F(ModuleTest, EveryClassHasAFactoryAndLiveObjectsKeepTheModule) {
  ASSERT_EQ(CanUnloadNow(), S_OK);
  for (const auto& c : kClasses) {
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(ClassObject(c.clsid, &factory), S_OK);
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    void* raw = nullptr;
    ASSERT_EQ(
        factory->CreateInstance(nullptr, c.filter ? IBaseFilter::kIid : IPropertyPage::kIid, &raw),
        S_OK);
    ComPtr<IUnknown> object = c.filter ? Identity<IBaseFilter>(raw) : Identity<IPropertyPage>(raw);
    void* aggregated = &aggregated;
    EXPECT_EQ(factory->CreateInstance(object.Get(), IID_IUnknown, &aggregated),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(aggregated, nullptr);
    if (c.filter) {
      CLSID clsid;
      ASSERT_EQ(QueryAs<IBaseFilter>(object.Get())->GetClassID(&clsid), S_OK);
      EXPECT_EQ(clsid, c.clsid);
    }
    factory->LockServer(true);
    factory.Reset();
    EXPECT_EQ(CanUnloadNow(), S_FALSE);  // the object and the lock
    object.Reset();
    EXPECT_EQ(CanUnloadNow(), S_FALSE);  // the lock
    ASSERT_EQ(ClassObject(c.clsid, &factory), S_OK);
    factory->LockServer(false);
    factory.Reset();
    EXPECT_EQ(CanUnloadNow(), S_OK);
  }
  ComPtr<IClassFactory> none;
  EXPECT_EQ(ClassObject(GUID_NULL, &none), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_FALSE(none);
}

TEST_F(ModuleTest, TheGraphBuilderLoadsAStoreFilterByMerit) {
  ASSERT_EQ(Run("DllRegisterServer"), S_OK);
  {
    ComPtr<IBaseFilter> made;
    ASSERT_EQ(CoCreateInstance(kVideoFilter, nullptr, IBaseFilter::kIid,
                               reinterpret_cast<void**>(made.ReleaseAndGetAddressOf())),
              S_OK);
    EXPECT_EQ(CanUnloadNow(), S_FALSE);  // the module made it

    // The source's YUY2 reaches an RGB32-only sink only through the video filter.
    const auto graph = MakeCom<FilterGraph>();
    const auto source = MakeCom<PushSource>(Yuy2Type(720, 576));
    const auto sink = MakeCom<RecordingSink>(MEDIASUBTYPE_RGB32);
    graph->AddFilter(source.Get(), u"Source");
    graph->AddFilter(sink.Get(), u"Sink");
    ASSERT_EQ(graph->Render(source->Pin()), S_OK);
    ComPtr<IBaseFilter> found;
    EXPECT_EQ(graph->FindFilterByName(u"Korvalin", found.ReleaseAndGetAddressOf()), S_OK);
    EXPECT_EQ(graph->FindFilterByName(u"KorvalinForce", found.ReleaseAndGetAddressOf()),
              VFW_E_NOT_FOUND);
  }
  EXPECT_EQ(CanUnloadNow(), S_OK);

  // Linked in, the classes are found in-process first and the store's copies are skipped.
  RegisterModuleClassesInProcess();
  std::vector<std::u16string> names;
  for (const FactoryTemplate& entry : FilterRegistry::Process().FiltersAccepting({Yuy2Type(8, 2)}))
    names.push_back(entry.name);
  EXPECT_EQ(names, (std::vector<std::u16string>{u"Korvalin", u"KorvalinForce"}));
  for (const FactoryTemplate& entry : ModuleClasses())
    FilterRegistry::Process().Unregister(entry.clsid);
}

}  // namespace
}  // namespace korvalin::testing
