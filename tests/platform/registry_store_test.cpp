#include "platform/registry_store.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/regedit_format.h"
#include "support/temp_folder.h"

namespace korvalin::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr std::string_view kKey = "Software\\Vornik\\Korvalin";

RegistryValue Text(std::string_view text) {
  RegistryValue value{REG_SZ, std::vector<uint8_t>(text.begin(), text.end())};
  value.data.push_back(0);
  return value;
}

RegistryValue Dword(uint32_t n) {
  return RegistryValue{REG_DWORD,
                       {static_cast<uint8_t>(n), static_cast<uint8_t>(n >> 8),
                        static_cast<uint8_t>(n >> 16), static_cast<uint8_t>(n >> 24)}};
}

RegistryValue Bytes(uint32_t type, std::vector<uint8_t> data) {
  return RegistryValue{type, std::move(data)};
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Sets or unsets an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    value ? ::setenv(name, value, 1) : ::unsetenv(name);
  }
  ~ScopedEnv() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

TEST(RegeditFormat, SerializesTheDocumentedForm) {
  RegistryDocument document;
  RegistryKey& key = document.CreateKey(RootKey::LocalMachine, kKey);
  key.Set("Overscan", Dword(15));
  key.Set("SubLang", Text("English"));
  key.Set("SubPath", Text("C:\\Korvalin;\"x\""));
  key.Set("", Text("default"));
  key.Set("Blob", Bytes(REG_BINARY, {0x01, 0xab}));
  key.Set("Multi", Bytes(7, {'a', 0, 0}));
  EXPECT_EQ(SerializeRegedit(document),
            "REGEDIT4\n"
            "\n"
            "[HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin]\n"
            "\"Overscan\"=dword:0000000f\n"
            "\"SubLang\"=\"English\"\n"
            "\"SubPath\"=\"C:\\\\Korvalin;\\\"x\\\"\"\n"
            "@=\"default\"\n"
            "\"Blob\"=hex:01,ab\n"
            "\"Multi\"=hex(7):61,00,00\n"
            "\n");
}

TEST(RegeditFormat, RoundTripsEveryKindOfValue) {
  RegistryDocument document;
  RegistryKey& key = document.CreateKey(RootKey::LocalMachine, kKey);
  key.Set("Escapes", Text("a\\b\"c\\\\\"\\"));
  std::string high;
  for (int c = 0x80; c <= 0xFF; ++c) high += static_cast<char>(c);
  key.Set("High", Text(high));
  key.Set("NoTerminator", Bytes(REG_SZ, {'a', 'b'}));
  key.Set("InnerZero", Bytes(REG_SZ, {'a', 0, 'b', 0}));
  key.Set("LineBreaks", Text("one\r\ntwo\nthree\r"));
  key.Set("EmptySz", Bytes(REG_SZ, {}));
  key.Set("EmptyText", Text(""));
  key.Set("ShortDword", Bytes(REG_DWORD, {1, 2, 3}));
  key.Set("LongDword", Bytes(REG_DWORD, {1, 2, 3, 4, 5}));
  key.Set("Negative", Dword(0xFFFFFFFF));
  std::vector<uint8_t> big;
  for (int i = 0; i < 300; ++i) big.push_back(static_cast<uint8_t>(i * 7));
  key.Set("Big", Bytes(REG_BINARY, big));
  key.Set("BigType", Bytes(0xFFFFFFFF, big));
  key.Set("Zero", Bytes(0, {}));
  key.Set("", Dword(7));
  key.Set("Name \\ with \" quotes", Text("x"));
  document.CreateKey(RootKey::LocalMachine, "");  // the root itself, no values
  document.CreateKey(RootKey::Users, "S-1\\odd]name [x]").Set("v", Dword(1));
  document.CreateKey(RootKey::ClassesRoot, "Empty");
  document.CreateKey(RootKey::CurrentUser, "A\\B").Set("High\xE9", Text("\xFF"));

  const std::string text = SerializeRegedit(document);
  const RegeditParse parsed = ParseRegedit(text);
  EXPECT_FALSE(parsed.Damaged());
  EXPECT_EQ(parsed.document, document) << text;

  // High bytes stay as they are in quoted text; texts that cannot round-trip quoted are hex(1).
  for (const std::string& line : {"\"High\"=\"" + high + "\"\n", "\"NoTerminator\"=hex(1):61,62\n"s,
                                  "\"InnerZero\"=hex(1):61,00,62,00\n"s, "\"EmptySz\"=hex(1):\n"s,
                                  "\"EmptyText\"=\"\"\n"s, "\"ShortDword\"=hex(4):01,02,03\n"s,
                                  "\"Negative\"=dword:ffffffff\n"s, "\"BigType\"=hex(ffffffff):"s,
                                  "\"Zero\"=hex(0):\n"s, "\"Name \\\\ with \\\" quotes\"=\"x\"\n"s})
    EXPECT_NE(text.find(line), std::string::npos) << line;
  // Long byte lists are wrapped with continuations and no line grows beyond 80 columns.
  std::istringstream lines(text);
  std::string line;
  int continued = 0;
  while (std::getline(lines, line)) {
    if (line.rfind("\"High\"", 0) == 0 || line.rfind("\"Name", 0) == 0) continue;
    EXPECT_LE(line.size(), 80u) << line;
    if (!line.empty() && line.back() == '\\') ++continued;
  }
  EXPECT_GE(continued, 10);
}

TEST(RegeditFormat, ReadsCrlfContinuationsCommentsAndUnnamedValues) {
  const std::string text =
      "\xEF\xBB\xBFREGEDIT4\r\n"
      "\r\n"
      "; a comment\r\n"
      "[HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin]\r\n"
      "\"Blob\"=hex:01,02,\\\r\n"
      "  03,04,\\\r\n"
      "  05\r\n"
      "@=\"root value\"\r\n"
      "  \"Spaced\" = dword:0000000A  \r\n"
      "\"Typed\"=HEX(2):41,42,00\r\n"
      "\"Short\"=dword:1f\r\n"
      "\"Unknown escape\"=\"a\\nb\"\r\n";
  const RegeditParse parsed = ParseRegedit(text);
  EXPECT_TRUE(parsed.headerOk);
  EXPECT_EQ(parsed.skippedLines, 0u);
  const RegistryDocument& d = parsed.document;
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, "Blob"), Bytes(REG_BINARY, {1, 2, 3, 4, 5}));
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, ""), Text("root value"));
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, "Spaced"), Dword(10));
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, "Typed"), Bytes(2, {'A', 'B', 0}));
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, "Short"), Dword(0x1f));
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, "Unknown escape"), Text("a\\nb"));
}

TEST(RegeditFormat, NamesCompareWithoutLetterCaseAndKeepTheirSpelling) {
  const std::string text =
      "REGEDIT4\n\n"
      "[hkey_local_machine\\SOFTWARE\\vornik\\Korvalin]\n"
      "\"SubLang\"=\"English\"\n"
      "[HKEY_LOCAL_MACHINE\\Software\\Vornik\\KORVALIN]\n"
      "\"SUBLANG\"=\"French\"\n"
      "\"Other\"=dword:00000001\n";
  const RegeditParse parsed = ParseRegedit(text);
  EXPECT_FALSE(parsed.Damaged());
  ASSERT_EQ(parsed.document.keys.size(), 1u);
  const RegistryKey& key = parsed.document.keys[0];
  EXPECT_EQ(key.root, RootKey::LocalMachine);
  EXPECT_EQ(key.subKey, "SOFTWARE\\vornik\\Korvalin");  // first spelling kept
  ASSERT_EQ(key.values.size(), 2u);
  EXPECT_EQ(key.values[0].first, "SubLang");
  EXPECT_EQ(key.values[0].second, Text("French"));  // the later value wins
  EXPECT_NE(parsed.document.Find(RootKey::LocalMachine, "software\\VORNIK\\korvalin", "sublang"),
            nullptr);
  RegistryKey k;  // bytes above 0x7F are not folded
  k.Set("\xC9t\xE9", Dword(1));
  EXPECT_EQ(k.Find("\xE9t\xE9"), nullptr);
}

TEST(RegeditFormat, SkipsDamagedLinesAndKeepsTheRest) {
  const std::string text =
      "REGEDIT4\n\n"
      "\"Orphan\"=dword:00000001\n"  // before any key
      "[HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin]\n"
      "\"Good\"=dword:00000002\n"
      "garbage\n"
      "\"Unterminated=\"x\"\n"
      "\"BadDword\"=dword:xyz\n"
      "\"TooLong\"=dword:123456789\n"
      "\"BadHex\"=hex:01,zz\n"
      "\"Trailing\"=\"x\" junk\n"
      "\"NoEquals\" \"x\"\n"
      "\"BadType\"=hex(q):01\n"
      "\"BrokenContinuation\"=hex:01,\\\n"
      "\"Next\"=\"kept\"\n"
      "[HKEY_NOWHERE\\x]\n"
      "\"InUnknownKey\"=dword:00000003\n"
      "[-HKEY_LOCAL_MACHINE\\Software]\n"
      "[HKEY_USERS\\x\n"
      "[HKEY_USERS\\x]\n"
      "\"Last\"=dword:00000004\n";
  const RegeditParse parsed = ParseRegedit(text);
  EXPECT_TRUE(parsed.headerOk);
  EXPECT_TRUE(parsed.Damaged());
  EXPECT_EQ(parsed.skippedLines, 14u);
  const RegistryDocument& d = parsed.document;
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, "Good"), Dword(2));
  // A list whose continuation line is not part of it is incomplete: left out.
  EXPECT_EQ(d.Find(RootKey::LocalMachine, kKey, "BrokenContinuation"), nullptr);
  EXPECT_EQ(*d.Find(RootKey::LocalMachine, kKey, "Next"), Text("kept"));
  EXPECT_EQ(*d.Find(RootKey::Users, "x", "Last"), Dword(4));
  EXPECT_EQ(d.Find(RootKey::LocalMachine, kKey, "BadHex"), nullptr);
  EXPECT_EQ(d.keys.size(), 2u);
}

TEST(RegeditFormat, WithoutHeaderTheDocumentIsEmpty) {
  EXPECT_TRUE(ParseRegedit("Windows Registry Editor Version 5.00\n[HKEY_USERS\\x]\n").document ==
              RegistryDocument{});
  EXPECT_FALSE(ParseRegedit("REGEDIT5\n").headerOk);
  EXPECT_FALSE(ParseRegedit(std::string("\0\0\xff", 3)).headerOk);
  // Nothing at all is simply empty, not damaged.
  EXPECT_FALSE(ParseRegedit("").Damaged());
  EXPECT_FALSE(ParseRegedit(" \r\n\n").Damaged());
  EXPECT_FALSE(ParseRegedit("\n\nREGEDIT4").Damaged());
}

class RegistryStoreTest : public ::testing::Test {
 protected:
  fs::path File() const { return folder_.path() / "korvalin" / "registry.reg"; }
  fs::path Backup() const { return File().string() + ".bak"; }
  static int Set(RegistryStore& store, std::string_view name, RegistryValue value) {
    return store.Set(RootKey::LocalMachine, kKey, name, std::move(value));
  }
  static std::optional<RegistryValue> Get(RegistryStore& store, std::string_view name) {
    return store.Query(RootKey::LocalMachine, kKey, name);
  }
  testing::TempFolder folder_;
};

TEST_F(RegistryStoreTest, WritesCreateFoldersAndTheDocumentedText) {
  RegistryStore store(File());
  EXPECT_FALSE(Get(store, "SubLang"));
  EXPECT_FALSE(fs::exists(File()));  // reading creates nothing
  ASSERT_EQ(Set(store, "Overscan", Dword(15)), 0);
  ASSERT_EQ(Set(store, "SubLang", Text("English")), 0);
  ASSERT_EQ(store.Set(RootKey::LocalMachine, "SOFTWARE\\VORNIK\\KORVALIN", "SUBLANG",
                      Text("Fran\xE7"
                           "ais")),
            0);
  EXPECT_EQ(ReadFile(File()),
            "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin]\n"
            "\"Overscan\"=dword:0000000f\n\"SubLang\"=\"Fran\xE7"
            "ais\"\n\n");
  EXPECT_EQ(Get(store, "overscan"), Dword(15));
  // Only the file and its lock file stay behind: no temporary file, no backup.
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(File().parent_path()))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"registry.reg", "registry.reg.lock"}));
  // Names with line feeds are refused.
  EXPECT_EQ(store.Set(RootKey::LocalMachine, "a\nb", "x", Dword(1)), -1);
  EXPECT_EQ(Set(store, "x\ny", Dword(1)), -1);
  // DeleteValues empties only that key.
  ASSERT_EQ(store.Set(RootKey::CurrentUser, kKey, "C", Dword(3)), 0);
  ASSERT_EQ(store.DeleteValues(RootKey::LocalMachine, kKey), 0);
  EXPECT_TRUE(store.Values(RootKey::LocalMachine, kKey).empty());
  EXPECT_EQ(store.Query(RootKey::CurrentUser, kKey, "C"), Dword(3));
}

TEST_F(RegistryStoreTest, DamagedFilesReadWhatIsLegibleAndAreBackedUpOnTheNextWrite) {
  const std::string garbage = "\x01\x02 not a registry file\n\"Overscan\"=dword:00000001\n";
  const std::string damagedLine =
      "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin]\n"
      "\"Overscan\"=dword:00000011\n\"Broken\"=dword:\n\"SubLang\"=\"German\"\n";
  for (const std::string& text : {garbage, damagedLine}) {
    folder_.Write("korvalin/registry.reg", text);
    fs::remove(Backup());
    RegistryStore store(File());
    const bool legible = text == damagedLine;
    EXPECT_EQ(Get(store, "Overscan"), legible ? std::optional(Dword(17)) : std::nullopt);
    EXPECT_FALSE(fs::exists(Backup()));  // reading changes nothing
    ASSERT_EQ(Set(store, "Fill", Dword(80)), 0);
    EXPECT_EQ(ReadFile(Backup()), text);
    EXPECT_EQ(Get(store, "Fill"), Dword(80));
    EXPECT_EQ(Get(store, "SubLang"), legible ? std::optional(Text("German")) : std::nullopt);
    EXPECT_FALSE(ParseRegedit(ReadFile(File())).Damaged());
    // A clean file is not backed up again.
    fs::remove(Backup());
    ASSERT_EQ(Set(store, "Fill", Dword(81)), 0);
    EXPECT_FALSE(fs::exists(Backup()));
  }
}

TEST_F(RegistryStoreTest, AWriteRemovesTemporaryFilesThatKilledWritersLeft) {
  const struct {
    const char* name;
    bool stale;
  } files[] = {
      {"registry.reg.tmpA1b2C3", true},   {"registry.reg.bak.tmpzz9Z_x", true},
      {"registry.reg.tmpA1b2C3x", false}, {"registry.reg.tmp", false},
      {"other.reg.tmpA1b2C3", false},     {"registry.reg.lock.tmpA1b2C3", false},
  };
  for (const auto& f : files) folder_.Write(std::string("korvalin/") + f.name, "partial");
  RegistryStore store(File());
  ASSERT_EQ(Set(store, "Overscan", Dword(3)), 0);
  for (const auto& f : files)
    EXPECT_EQ(fs::exists(File().parent_path() / f.name), !f.stale) << f.name;
  EXPECT_EQ(Get(store, "Overscan"), Dword(3));
}

TEST_F(RegistryStoreTest, AnOversizedFileReadsAsEmptyAndIsMovedAsideByAWrite) {
  constexpr std::uintmax_t kOversized = (std::uintmax_t{64} << 20) + 1;
  folder_.Write("korvalin/registry.reg",
                "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Vornik\\Korvalin]\n"
                "\"Fill\"=dword:00000050\n");
  fs::resize_file(File(), kOversized);  // sparse: the size is what counts
  RegistryStore store(File());
  EXPECT_FALSE(Get(store, "Fill"));
  ASSERT_EQ(Set(store, "Overscan", Dword(3)), 0);
  EXPECT_EQ(fs::file_size(Backup()), kOversized);
  EXPECT_EQ(Get(store, "Overscan"), Dword(3));
  EXPECT_FALSE(Get(store, "Fill"));
}

TEST_F(RegistryStoreTest, FilesThatCannotBeWrittenFailTheWriteAndLinksStayLinks) {
  fs::create_directories(File());  // a folder where the file should be
  RegistryStore store(File());
  EXPECT_FALSE(Get(store, "Overscan"));
  EXPECT_EQ(Set(store, "Overscan", Dword(1)), -1);
  EXPECT_TRUE(fs::is_directory(File()));

  RegistryStore blocked(folder_.Write("plain", "x") / "registry.reg");
  EXPECT_EQ(Set(blocked, "Overscan", Dword(1)), -1);
  RegistryStore::Batch batch(blocked);
  EXPECT_EQ(Set(blocked, "Overscan", Dword(1)), 0);  // queued
  EXPECT_EQ(batch.Commit(), -1);

  const fs::path link = folder_.path() / "link.reg", real = folder_.path() / "real.reg";
  fs::create_symlink(real, link);
  RegistryStore linked(link);
  ASSERT_EQ(Set(linked, "Fill", Dword(90)), 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_NE(ReadFile(real).find("\"Fill\"=dword:0000005a"), std::string::npos);
}

TEST_F(RegistryStoreTest, TwoStoresOnOneFileNeverLoseEachOthersValues) {
  RegistryStore first(File()), second(File());
  ASSERT_EQ(Set(first, "A", Dword(1)), 0);
  ASSERT_EQ(Set(second, "B", Dword(2)), 0);
  {
    // Both take their snapshot before either commits.
    RegistryStore::Batch one(first), two(second);
    ASSERT_EQ(Set(first, "C", Dword(3)), 0);
    ASSERT_EQ(Set(second, "D", Dword(4)), 0);
    ASSERT_EQ(Set(second, "A", Dword(10)), 0);
  }
  RegistryStore reader(File());
  for (const auto& [name, n] : {std::pair{"A", 10}, {"B", 2}, {"C", 3}, {"D", 4}})
    EXPECT_EQ(Get(reader, name), Dword(n)) << name;
}

TEST_F(RegistryStoreTest, ConcurrentWritersInThreadsAndProcessesLoseNothing) {
  constexpr int kWriters = 6, kProcesses = 2, kValues = 15;
  const auto name = [](int writer, int i) {
    return "W" + std::to_string(writer) + "_" + std::to_string(i);
  };
  auto writeAll = [&](int writer) {
    RegistryStore store(File());
    for (int i = 0; i < kValues; ++i)
      if (Set(store, name(writer, i), Dword(writer * 100 + i)) != 0) return false;
    return true;
  };
  std::vector<pid_t> children;
  for (int writer = kWriters; writer < kWriters + kProcesses; ++writer) {
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) ::_exit(writeAll(writer) ? 0 : 1);
    children.push_back(pid);
  }
  std::vector<std::thread> threads;
  std::vector<char> ok(kWriters, 0);
  for (int writer = 0; writer < kWriters; ++writer)
    threads.emplace_back([&, writer] { ok[writer] = writeAll(writer); });
  for (auto& thread : threads) thread.join();
  for (pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  for (char each : ok) EXPECT_TRUE(each);
  RegistryStore reader(File());
  EXPECT_EQ(reader.Values(RootKey::LocalMachine, kKey).size(),
            static_cast<std::size_t>((kWriters + kProcesses) * kValues));
  for (int writer = 0; writer < kWriters + kProcesses; ++writer)
    for (int i = 0; i < kValues; ++i)
      EXPECT_EQ(Get(reader, name(writer, i)), Dword(writer * 100 + i)) << name(writer, i);
}

TEST_F(RegistryStoreTest, ABatchReadsOneSnapshotAndCommitsOnceAtTheOutermostEnd) {
  RegistryStore store(File()), other(File());
  { RegistryStore::Batch onlyReads(store); }
  EXPECT_FALSE(fs::exists(File().parent_path()));  // a batch that only reads writes nothing
  ASSERT_EQ(Set(store, "Before", Dword(1)), 0);
  {
    RegistryStore::Batch outer(store);
    // Another writer changes the file: the batch does not see it.
    ASSERT_EQ(Set(other, "Outside", Dword(2)), 0);
    ASSERT_EQ(Set(other, "Before", Dword(5)), 0);
    EXPECT_FALSE(Get(store, "Outside"));
    EXPECT_EQ(Get(store, "Before"), Dword(1));
    // Its own writes are seen at once but not written yet.
    ASSERT_EQ(Set(store, "Inside", Dword(3)), 0);
    EXPECT_EQ(Get(store, "Inside"), Dword(3));
    EXPECT_EQ(store.Values(RootKey::LocalMachine, kKey).size(), 2u);
    {
      RegistryStore::Batch inner(store);
      ASSERT_EQ(Set(store, "Nested", Dword(4)), 0);
    }
    EXPECT_FALSE(Get(other, "Inside"));  // the inner batch ended without committing
    EXPECT_FALSE(Get(other, "Nested"));
    EXPECT_EQ(Get(store, "Nested"), Dword(4));
  }
  // Committed together, merged with the other writer's values.
  for (const auto& [name, n] :
       {std::pair{"Inside", 3}, {"Nested", 4}, {"Outside", 2}, {"Before", 5}})
    EXPECT_EQ(Get(other, name), Dword(n)) << name;
  // Without a batch every read looks at the file afresh.
  ASSERT_EQ(Set(other, "Later", Dword(6)), 0);
  EXPECT_EQ(Get(store, "Later"), Dword(6));
}

TEST_F(RegistryStoreTest, CommitWritesAtOnceAndTheBatchGoesOn) {
  RegistryStore store(File()), other(File());
  RegistryStore::Batch batch(store);
  ASSERT_EQ(Set(store, "A", Dword(1)), 0);
  EXPECT_FALSE(fs::exists(File()));
  ASSERT_EQ(Set(other, "B", Dword(2)), 0);
  ASSERT_EQ(batch.Commit(), 0);
  EXPECT_EQ(Get(other, "A"), Dword(1));
  EXPECT_EQ(Get(store, "B"), Dword(2));  // the fresh snapshot holds the other writer's value
  ASSERT_EQ(Set(store, "C", Dword(3)), 0);
  EXPECT_FALSE(Get(other, "C"));
  EXPECT_EQ(batch.Commit(), 0);
  EXPECT_EQ(Get(other, "C"), Dword(3));
  EXPECT_EQ(batch.Commit(), 0);  // nothing pending
}

TEST(RegistryStorePath, FollowsTheEnvironment) {
  const struct {
    const char *registry, *config, *expected;
  } cases[] = {
      {"/somewhere/my.reg", "/xdg", "/somewhere/my.reg"},
      {"", "/xdg", "/xdg/korvalin/registry.reg"},  // empty counts as unset
      {nullptr, nullptr, "/home/someone/.config/korvalin/registry.reg"},
      {nullptr, "", "/home/someone/.config/korvalin/registry.reg"},
      {nullptr, "relative/config", "/home/someone/.config/korvalin/registry.reg"},
  };
  ScopedEnv home("HOME", "/home/someone");
  for (const auto& c : cases) {
    ScopedEnv registry("KORVALIN_REGISTRY", c.registry);
    ScopedEnv config("XDG_CONFIG_HOME", c.config);
    EXPECT_EQ(RegistryStore::DefaultFile(), fs::path(c.expected));
  }
}

TEST(RegistryStorePath, TheProcessStoreFollowsKorvalinRegistry) {
  testing::TempFolder folder;
  const fs::path a = folder.path() / "a.reg", b = folder.path() / "b.reg";
  {
    ScopedEnv registry("KORVALIN_REGISTRY", a.c_str());
    RegistryStore& store = RegistryStore::Process();
    EXPECT_EQ(store.file(), a);
    EXPECT_EQ(&RegistryStore::Process(), &store);
    ASSERT_EQ(store.Set(RootKey::LocalMachine, kKey, "Where", Text("a")), 0);
  }
  {
    ScopedEnv registry("KORVALIN_REGISTRY", b.c_str());
    RegistryStore& store = RegistryStore::Process();
    EXPECT_EQ(store.file(), b);
    EXPECT_FALSE(store.Query(RootKey::LocalMachine, kKey, "Where"));
    ASSERT_EQ(store.Set(RootKey::LocalMachine, kKey, "Where", Text("b")), 0);
  }
  ScopedEnv registry("KORVALIN_REGISTRY", a.c_str());
  EXPECT_EQ(RegistryStore::Process().Query(RootKey::LocalMachine, kKey, "Where"), Text("a"));
  EXPECT_NE(ReadFile(b).find("\"Where\"=\"b\""), std::string::npos);
}

}  // namespace
}  // namespace korvalin::platform
