#include "platform/registry_store.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <mutex>
#include <system_error>

namespace korvalin::platform {

namespace fs = std::filesystem;

namespace {

// Larger files are not a registry of ours: they read as empty, and a write moves them aside.
constexpr off_t kMaxFileSize = off_t{64} << 20;

enum class FileState { Missing, Read, TooLarge, Unreadable };

struct FileContents {
  FileState state = FileState::Missing;
  std::string bytes;
  mode_t mode = 0644;
};

// Closes a descriptor when it goes out of scope.
class Fd {
 public:
  explicit Fd(int fd = -1) : fd_(fd) {}
  ~Fd() { Reset(); }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  int get() const { return fd_; }
  int Reset() {
    const int result = fd_ >= 0 ? ::close(fd_) : 0;
    fd_ = -1;
    return result;
  }

 private:
  int fd_;
};

FileContents ReadWholeFile(const fs::path& path) {
  FileContents contents;
  Fd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (fd.get() < 0) {
    contents.state =
        (errno == ENOENT || errno == ENOTDIR) ? FileState::Missing : FileState::Unreadable;
    return contents;
  }
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
    contents.state = FileState::Unreadable;
    return contents;
  }
  contents.mode = st.st_mode & 07777;
  if (st.st_size > kMaxFileSize) {
    contents.state = FileState::TooLarge;
    return contents;
  }
  char buffer[16384];
  for (;;) {
    const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      contents.state = FileState::Unreadable;
      contents.bytes.clear();
      return contents;
    }
    if (contents.bytes.size() > static_cast<std::size_t>(kMaxFileSize)) {  // grew meanwhile
      contents.state = FileState::TooLarge;
      contents.bytes.clear();
      return contents;
    }
    if (n == 0) break;
    contents.bytes.append(buffer, static_cast<std::size_t>(n));
  }
  contents.state = FileState::Read;
  return contents;
}

RegistryDocument LoadDocument(const fs::path& path) {
  FileContents contents = ReadWholeFile(path);
  if (contents.state != FileState::Read) return {};
  return ParseRegedit(contents.bytes).document;
}

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

fs::path FolderOf(const fs::path& file) {
  fs::path folder = file.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

// Writes `path` as a whole: a temporary file in the same folder, synced, renamed over it,
// then the folder synced. 0 or -1; on failure the old file is untouched.
int ReplaceFile(const fs::path& path, std::string_view bytes, mode_t mode) {
  std::string tempName = path.string() + ".tmpXXXXXX";
  Fd fd(::mkostemp(tempName.data(), O_CLOEXEC));
  if (fd.get() < 0) return -1;
  const bool written =
      WriteAll(fd.get(), bytes) && ::fchmod(fd.get(), mode) == 0 && ::fsync(fd.get()) == 0;
  if (fd.Reset() != 0 || !written || ::rename(tempName.c_str(), path.c_str()) != 0) {
    ::unlink(tempName.c_str());
    return -1;
  }
  Fd folder(::open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.get() >= 0) ::fsync(folder.get());  // the rename is done; a failed sync is not
  return 0;                                      // worth undoing it
}

// True for "<name>.tmpXXXXXX" and "<name>.bak.tmpXXXXXX": the temporary files ReplaceFile
// makes for the file and its backup.
bool IsTemporaryOf(const std::string& candidate, const std::string& name) {
  constexpr std::size_t kSuffix = 6;  // what mkostemp fills in
  for (const std::string& stem : {name + ".tmp", name + ".bak.tmp"}) {
    if (candidate.size() == stem.size() + kSuffix && candidate.starts_with(stem)) return true;
  }
  return false;
}

// Removes the temporary files that writers killed before their rename left beside `file`.
// Called under the store's lock: no live writer of the file has one open then.
void RemoveStaleTemporaries(const fs::path& file) {
  const std::string name = file.filename().string();
  std::error_code ec;
  std::vector<fs::path> stale;
  for (fs::directory_iterator it(FolderOf(file), ec), end; !ec && it != end; it.increment(ec)) {
    if (IsTemporaryOf(it->path().filename().string(), name)) stale.push_back(it->path());
  }
  for (const fs::path& path : stale) fs::remove(path, ec);
}

// The file that is really replaced: a symbolic link is followed so that it stays a link.
fs::path WriteTarget(const fs::path& file) {
  fs::path target = file;
  std::error_code ec;
  for (int hops = 0; hops < 40 && fs::is_symlink(target, ec); ++hops) {  // also dangling links
    const fs::path link = fs::read_symlink(target, ec);
    if (ec) break;
    target = link.is_absolute() ? link : target.parent_path() / link;
  }
  return target;
}

struct Change {
  enum Kind { SetValue, DeleteValues, DeleteTree };
  Kind kind;
  RootKey root;
  std::string subKey;
  std::string name;  // SetValue: the value to set
  RegistryValue value;
};

void Apply(RegistryDocument& document, const Change& change) {
  switch (change.kind) {
    case Change::SetValue:
      document.CreateKey(change.root, change.subKey).Set(change.name, change.value);
      return;
    case Change::DeleteValues:
      if (RegistryKey* key = document.FindKey(change.root, change.subKey)) key->values.clear();
      return;
    case Change::DeleteTree:
      document.DeleteTree(change.root, change.subKey);
      return;
  }
}

bool ValidRoot(RootKey root) {
  return !RootKeyName(root).empty();
}

std::string EnvironmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string(value) : std::string();
}

fs::path HomeFolder() {
  std::string home = EnvironmentValue("HOME");
  if (!home.empty()) return home;
  struct passwd entry {};
  struct passwd* found = nullptr;
  char buffer[4096];
  if (::getpwuid_r(::getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found &&
      found->pw_dir && found->pw_dir[0] != '\0') {
    return found->pw_dir;
  }
  return ".";
}

}  // namespace

struct RegistryStore::State {
  std::mutex mutex;
  int batchDepth = 0;
  RegistryDocument view;        // while a batch lives: its snapshot plus pending changes
  std::vector<Change> pending;  // while a batch lives: changes not yet committed

  // Locks the file, merges `changes` into what is on disk and replaces the file. On
  // success `committed` (when given) receives the document written.
  int Commit(const fs::path& file, const std::vector<Change>& changes,
             RegistryDocument* committed) {
    if (changes.empty()) return 0;
    const fs::path target = WriteTarget(file);
    std::error_code ec;
    fs::create_directories(FolderOf(target), ec);  // failure shows when the lock is made

    const std::string lockName = target.string() + ".lock";
    Fd lock(::open(lockName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (lock.get() < 0) return -1;
    int locked;
    while ((locked = ::flock(lock.get(), LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (locked != 0) return -1;

    RemoveStaleTemporaries(target);
    FileContents contents = ReadWholeFile(target);
    if (contents.state == FileState::Unreadable) return -1;  // never replace what we can't read
    const fs::path backup = target.string() + ".bak";
    if (contents.state == FileState::TooLarge && ::rename(target.c_str(), backup.c_str()) != 0)
      return -1;
    RegeditParse parsed;
    if (contents.state == FileState::Read) {
      parsed = ParseRegedit(contents.bytes);
      if (parsed.Damaged() && ReplaceFile(backup, contents.bytes, contents.mode) != 0) {
        return -1;
      }
    }
    RegistryDocument document = std::move(parsed.document);
    for (const Change& change : changes) Apply(document, change);
    if (ReplaceFile(target, SerializeRegedit(document), contents.mode) != 0) return -1;
    if (committed) *committed = std::move(document);
    return 0;  // the lock goes with its descriptor
  }

  int Change1(const fs::path& file, Change change) {
    std::lock_guard guard(mutex);
    if (batchDepth > 0) {
      Apply(view, change);
      pending.push_back(std::move(change));
      return 0;
    }
    return Commit(file, {std::move(change)}, nullptr);
  }
};

RegistryStore::RegistryStore(fs::path file)
    : file_(std::move(file)), state_(std::make_unique<State>()) {}

RegistryStore::~RegistryStore() = default;

fs::path RegistryStore::DefaultFile() {
  const std::string explicitFile = EnvironmentValue("KORVALIN_REGISTRY");
  if (!explicitFile.empty()) return explicitFile;
  const std::string config = EnvironmentValue("XDG_CONFIG_HOME");
  // The XDG base directory rules ignore a relative path.
  if (!config.empty() && config.front() == '/')
    return fs::path(config) / "korvalin" / "registry.reg";
  return HomeFolder() / ".config" / "korvalin" / "registry.reg";
}

RegistryStore& RegistryStore::Process() {
  static std::mutex mutex;
  static std::map<fs::path, std::unique_ptr<RegistryStore>> stores;
  std::lock_guard guard(mutex);
  fs::path file = DefaultFile();
  std::unique_ptr<RegistryStore>& store = stores[file];
  if (!store) store = std::make_unique<RegistryStore>(std::move(file));
  return *store;
}

std::optional<RegistryValue> RegistryStore::Query(RootKey root, std::string_view subKey,
                                                  std::string_view name) const {
  std::lock_guard guard(state_->mutex);
  if (state_->batchDepth > 0) {
    const RegistryValue* value = state_->view.Find(root, subKey, name);
    return value ? std::optional<RegistryValue>(*value) : std::nullopt;
  }
  const RegistryDocument document = LoadDocument(file_);
  const RegistryValue* value = document.Find(root, subKey, name);
  return value ? std::optional<RegistryValue>(*value) : std::nullopt;
}

std::vector<std::pair<std::string, RegistryValue>> RegistryStore::Values(
    RootKey root, std::string_view subKey) const {
  std::lock_guard guard(state_->mutex);
  if (state_->batchDepth > 0) {
    const RegistryKey* key = state_->view.FindKey(root, subKey);
    return key ? key->values : std::vector<std::pair<std::string, RegistryValue>>{};
  }
  const RegistryDocument document = LoadDocument(file_);
  const RegistryKey* key = document.FindKey(root, subKey);
  return key ? key->values : std::vector<std::pair<std::string, RegistryValue>>{};
}

std::vector<std::string> RegistryStore::SubKeys(RootKey root, std::string_view subKey) const {
  std::lock_guard guard(state_->mutex);
  if (state_->batchDepth > 0) return state_->view.SubKeyNames(root, subKey);
  return LoadDocument(file_).SubKeyNames(root, subKey);
}

int RegistryStore::Set(RootKey root, std::string_view subKey, std::string_view name,
                       RegistryValue value) {
  if (!ValidRoot(root) || !IsStorableName(subKey) || !IsStorableName(name)) return -1;
  return state_->Change1(file_, Change{Change::SetValue, root, std::string(subKey),
                                       std::string(name), std::move(value)});
}

int RegistryStore::DeleteValues(RootKey root, std::string_view subKey) {
  if (!ValidRoot(root)) return -1;
  return state_->Change1(file_, Change{Change::DeleteValues, root, std::string(subKey), {}, {}});
}

int RegistryStore::DeleteKey(RootKey root, std::string_view subKey) {
  if (!ValidRoot(root) || subKey.empty()) return -1;
  return state_->Change1(file_, Change{Change::DeleteTree, root, std::string(subKey), {}, {}});
}

RegistryStore::Batch::Batch(RegistryStore& store) : store_(store) {
  State& state = *store_.state_;
  std::lock_guard guard(state.mutex);
  if (state.batchDepth++ == 0) {
    state.view = LoadDocument(store_.file_);
    state.pending.clear();
  }
}

RegistryStore::Batch::~Batch() {
  State& state = *store_.state_;
  std::lock_guard guard(state.mutex);
  if (--state.batchDepth > 0) return;
  state.Commit(store_.file_, state.pending, nullptr);  // a failed write is dropped silently
  state.pending.clear();
  state.view = {};
}

int RegistryStore::Batch::Commit() {
  State& state = *store_.state_;
  std::lock_guard guard(state.mutex);
  RegistryDocument committed;
  const bool any = !state.pending.empty();
  const int result = state.Commit(store_.file_, state.pending, &committed);
  state.pending.clear();
  state.view = (any && result == 0) ? std::move(committed) : LoadDocument(store_.file_);
  return result;
}

}  // namespace korvalin::platform
