#include "subtitles/readers/microdvd_ini_reader.h"

#include <memory>
#include <string>

#include "base/string_search.h"
#include "subtitles/line_reader.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/subtitle_discovery.h"
#include "subtitles/subtitle_loader.h"

namespace korvalin {
namespace {

constexpr char kHeader[] = "[Micro DVD Ini File]";
constexpr char kDirectoryKey[] = "Directory=";
constexpr char kFileKey[] = "File=";
// A language line: a digit 1-9, "=", four characters skipped, then the language's name.
constexpr int kLanguageNameOffset = 6;

struct LanguageRecord {
  DynString name;
  DynString fileName;
};

// How many INI loads are under way on this thread, the one now starting included.
class NestingGuard {
 public:
  NestingGuard() { ++depth_; }
  ~NestingGuard() { --depth_; }
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;
  bool TooDeep() const { return depth_ > kMaxMicroDvdIniNesting; }

 private:
  static thread_local int depth_;
};

thread_local int NestingGuard::depth_ = 0;

class MicroDvdIniParser {
 public:
  explicit MicroDvdIniParser(StdFile& file) : file_(file) {}

  // False unless the first line is the header.
  bool ReadHeader() {
    DynString line;
    ReadLineString(file_, line);
    line.TrimRight();
    line.TrimLeft();
    return CompareTextNoCase(line.c_str(), kHeader) == 0;
  }

  void ReadSettings() {
    DynString line;
    while (ReadLineString(file_, line) == 0) {
      const int comment = line.Find(";");
      if (comment >= 0) line.Truncate(static_cast<std::size_t>(comment));
      line.TrimRight();
      line.TrimLeft();
      if (!line.IsEmpty()) ReadSetting(line);
    }
  }

  const OwningPtrArray<LanguageRecord>& records() const { return records_; }
  const DynString& directory() const { return directory_; }

 private:
  void ReadSetting(const DynString& line) {
    const char* text = line.c_str();
    if (text[0] == '[') {
      inSubtitles_ = CompareTextNoCase(text, "[SUBTITLES]") == 0;
    } else if (!inSubtitles_) {
      return;
    } else if (StartsWithNoCase(text, kDirectoryKey)) {
      directory_.Assign(text + sizeof(kDirectoryKey) - 1);
    } else if (text[0] >= '1' && text[0] <= '9' && text[1] == '=') {
      if (waiting_) return;  // the language before still lacks its file
      waiting_ = std::make_unique<LanguageRecord>();
      waiting_->name = line.Mid(kLanguageNameOffset);
    } else if (StartsWithNoCase(text, kFileKey) && waiting_) {
      waiting_->fileName.Assign(text + sizeof(kFileKey) - 1);
      records_.Add(std::move(waiting_));
    }
  }

  StdFile& file_;
  OwningPtrArray<LanguageRecord> records_;
  std::unique_ptr<LanguageRecord> waiting_;  // a language whose file line is still to come
  DynString directory_{"."};
  bool inSubtitles_ = false;
};

// The first record named as the preferred language, else the first.
std::size_t ChooseRecord(const OwningPtrArray<LanguageRecord>& records,
                         const DynString& preferred) {
  for (std::size_t i = 0; i < records.Count(); ++i) {
    if (CompareTextNoCase(records[i]->name.c_str(), preferred.c_str()) == 0) return i;
  }
  return 0;
}

// The INI file's own folder with its final separator; empty for a bare file name.
DynString FolderOf(const char* path) {
  const DynString whole(path);
  for (int i = static_cast<int>(whole.Length()) - 1; i >= 0; --i) {
    if (whole.c_str()[i] == '/' || whole.c_str()[i] == '\\') return whole.Left(i + 1);
  }
  return DynString("");
}

void RecordLanguages(SubtitleTrack& track, const OwningPtrArray<LanguageRecord>& records,
                     std::size_t chosen, const char* path) {
  track.streamNames.Clear();
  for (const LanguageRecord* record : records) {
    track.streamNames.Add(std::make_unique<DynString>(record->name));
  }
  track.streamIndex = static_cast<int32_t>(chosen);
  track.fileName.Assign(path);
  track.formatName.Assign("MicroDVD-INI");
}

}  // namespace

int ReadMicroDvdIni(SubtitleTrack& track, const char* path) {
  const NestingGuard nesting;
  StdFile file;
  if (BeginReading(track, file, path, "rt", "MicroDVD-INI") != 0) return -1;
  if (nesting.TooDeep()) return -1;
  MicroDvdIniParser parser(file);
  if (!parser.ReadHeader()) return -1;
  parser.ReadSettings();
  file.Close();
  const OwningPtrArray<LanguageRecord>& records = parser.records();
  if (records.IsEmpty()) return -1;
  const std::size_t chosen = ChooseRecord(records, track.preferredLanguage);
  const DynString folder = ResolveDirectory(FolderOf(path).c_str(), parser.directory().c_str());
  if (folder.IsEmpty()) return -1;
  const std::string subtitles =
      FindNamedFile(folder.Concat(records[chosen]->fileName.c_str()).c_str());
  if (LoadSubtitleFile(track, subtitles.c_str()) != 0) return -1;
  RecordLanguages(track, records, chosen, path);
  return 0;
}

}  // namespace korvalin
