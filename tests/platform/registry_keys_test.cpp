#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/regedit_format.h"
#include "platform/registry_store.h"
#include "support/temp_folder.h"

namespace korvalin::platform {
namespace {

using Names = std::vector<std::string>;

// Keys with and without values; "{b}" is only implied by a key two levels below it.
constexpr std::string_view kTree =
    "REGEDIT4\n\n"
    "[HKEY_CLASSES_ROOT\\CLSID\\{A}]\n@=\"a\"\n\n"
    "[HKEY_CLASSES_ROOT\\CLSID\\{A}\\InprocServer32]\n@=\"/lib/a.so\"\n\n"
    "[HKEY_CLASSES_ROOT\\CLSID\\{A}X]\n@=\"sibling\"\n\n"
    "[HKEY_CLASSES_ROOT\\CLSIDX\\Other]\n\n"
    "[HKEY_CLASSES_ROOT\\clsid\\{b}\\Deep\\Er]\n\"v\"=dword:00000001\n\n"
    "[HKEY_CLASSES_ROOT\\CLSID\\{A}\\Pins\\1]\n\n"
    "[HKEY_CLASSES_ROOT\\CLSID\\{A}\\Pins\\0]\n\n"
    "[HKEY_CURRENT_USER\\CLSID\\{C}]\n\n";

TEST(RegistryKeys, SubKeyNamesAreTheDirectChildrenInStoredOrder) {
  const RegistryDocument document = ParseRegedit(kTree).document;
  const struct {
    RootKey root;
    std::string_view key;
    Names children;
  } cases[] = {
      {RootKey::ClassesRoot, "", {"CLSID", "CLSIDX"}},
      {RootKey::ClassesRoot, "CLSID", {"{A}", "{A}X", "{b}"}},
      {RootKey::ClassesRoot, "Clsid\\{a}", {"InprocServer32", "Pins"}},
      {RootKey::ClassesRoot, "CLSID\\{A}\\Pins", {"1", "0"}},
      {RootKey::ClassesRoot, "CLSID\\{A}\\InprocServer32", {}},
      {RootKey::ClassesRoot, "CLSI", {}},
      {RootKey::CurrentUser, "CLSID", {"{C}"}},
      {RootKey::LocalMachine, "", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(document.SubKeyNames(c.root, c.key), c.children) << c.key;
}

class RegistryKeysStore : public ::testing::Test {
 protected:
  RegistryKeysStore() { file_ = folder_.Write("registry.reg", std::string(kTree)); }
  std::string Text() const {
    std::ifstream in(file_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  Names Classes() const { return store_.SubKeys(RootKey::ClassesRoot, "CLSID"); }

  testing::TempFolder folder_;
  std::filesystem::path file_;
  RegistryStore store_{folder_.path() / "registry.reg"};
};

TEST_F(RegistryKeysStore, DeleteKeyRemovesTheWholeSubtreeAndNothingElse) {
  ASSERT_EQ(store_.DeleteKey(RootKey::ClassesRoot, "clsid\\{a}"), 0);
  EXPECT_EQ(Classes(), (Names{"{A}X", "{b}"}));
  EXPECT_EQ(store_.SubKeys(RootKey::ClassesRoot, "CLSID\\{A}"), Names{});
  EXPECT_TRUE(store_.Query(RootKey::ClassesRoot, "CLSID\\{A}X", ""));
  ASSERT_EQ(store_.DeleteKey(RootKey::ClassesRoot, "CLSID\\{b}"), 0);  // only implied
  EXPECT_EQ(Classes(), Names{"{A}X"});
  EXPECT_EQ(store_.SubKeys(RootKey::CurrentUser, "CLSID"), Names{"{C}"});

  const std::string before = Text();
  EXPECT_EQ(store_.DeleteKey(RootKey::ClassesRoot, "CLSID\\{missing}"), 0);
  EXPECT_EQ(store_.DeleteKey(RootKey::ClassesRoot, ""), -1);  // never a whole root
  EXPECT_EQ(Text(), before);
}

TEST_F(RegistryKeysStore, ABatchSeesItsDeletionsAndWritesThemAtCommit) {
  RegistryStore::Batch batch(store_);
  ASSERT_EQ(store_.DeleteKey(RootKey::ClassesRoot, "CLSID\\{A}"), 0);
  ASSERT_EQ(store_.Set(RootKey::ClassesRoot, "CLSID\\{A}\\New", "",
                       RegistryValue{REG_DWORD, {1, 0, 0, 0}}),
            0);
  EXPECT_EQ(store_.SubKeys(RootKey::ClassesRoot, "CLSID\\{A}"), Names{"New"});
  EXPECT_EQ(Text(), kTree);  // nothing written yet
  ASSERT_EQ(batch.Commit(), 0);
  const RegistryDocument written = ParseRegedit(Text()).document;
  EXPECT_EQ(written.SubKeyNames(RootKey::ClassesRoot, "CLSID\\{A}"), Names{"New"});
  EXPECT_FALSE(written.FindKey(RootKey::ClassesRoot, "CLSID\\{A}\\InprocServer32"));
  EXPECT_TRUE(written.FindKey(RootKey::ClassesRoot, "CLSIDX\\Other"));
}

}  // namespace
}  // namespace korvalin::platform
