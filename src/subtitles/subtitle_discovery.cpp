#include "subtitles/subtitle_discovery.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/file_search.h"

namespace korvalin {
namespace {

constexpr const char* kExtensions[] = {".srt", ".sub", ".txt", ".smi", ".ssa",
                                       ".js",  ".rt",  ".aqt", ".ini", ".mdv"};
constexpr const char* kNameForms[] = {"", ".*", "-*"};
constexpr const char* kSharedBaseName = "Subtitles";

bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

bool EndsWithSlash(const DynString& text) {
  return !text.IsEmpty() && text.c_str()[text.Length() - 1] == '/';
}

void EnsureTrailingSlash(DynString& text) {
  if (!EndsWithSlash(text)) text.Append("/");
}

// The video path split into its folder (with its final separator) and its file name
// without the extension; both empty when the path holds no separator.
void SplitVideoPath(const char* path, DynString* folder, DynString* baseName) {
  const DynString video(path ? path : "");
  const char* text = video.c_str();
  int dot = -1;
  for (int i = static_cast<int>(video.Length()) - 1; i >= 0; --i) {
    if (IsSeparator(text[i])) {
      *folder = video.Left(i + 1);
      *baseName = dot < 0 ? video.Mid(i + 1) : video.Mid(i + 1, dot - i - 1);
      return;
    }
    if (text[i] == '.' && dot < 0) dot = i;
  }
  folder->Assign("");
  baseName->Assign("");
}

DynString WithSlashes(const char* text) {
  std::string result(text ? text : "");
  std::replace(result.begin(), result.end(), '\\', '/');
  return DynString(result.c_str(), result.size());
}

// "~/" stands for the home folder; false when that cannot be known.
bool ExpandHome(DynString& element) {
  if (element.Find("~/") != 0) return true;
  const char* home = std::getenv("HOME");
  if (!home || !*home) return false;
  DynString expanded(home);
  expanded.Append(element.c_str() + 1);
  element = std::move(expanded);
  return true;
}

// Every "/./" as "/", left to right, the search going on after each match (so in "/././"
// only the first is replaced).
std::string WithoutCurrentFolders(std::string_view path) {
  std::string out;
  out.reserve(path.size());
  for (std::size_t i = 0;;) {
    const std::size_t found = path.find("/./", i);
    out.append(path.substr(i, found == std::string_view::npos ? found : found - i));
    if (found == std::string_view::npos) return out;
    out.push_back('/');
    i = found + 3;
  }
}

// Removes "/./" and folds each "/../" into the folder before it; false when climbing above
// "/". Folding the first "/../" again and again gives the same as this one pass over the
// folders: a ".." between two slashes drops the folder before it, except the text before the
// first slash, which it cannot climb out of.
bool Normalize(DynString& path) {
  const std::string whole = WithoutCurrentFolders(path.c_str());
  std::vector<std::string_view> kept;
  for (std::size_t start = 0;;) {
    const std::size_t slash = whole.find('/', start);
    if (slash == std::string::npos) {
      kept.emplace_back(whole.data() + start, whole.size() - start);
      break;
    }
    const std::string_view folder(whole.data() + start, slash - start);
    if (start > 0 && folder == "..") {
      if (kept.size() < 2) return false;
      kept.pop_back();
    } else {
      kept.push_back(folder);
    }
    start = slash + 1;
  }
  std::string joined;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (i > 0) joined.push_back('/');
    joined.append(kept[i]);
  }
  path.Assign(joined.c_str(), joined.size());
  return true;
}

// Keeps the first of byte-equal paths, in place.
void RemoveDuplicates(OwningPtrArray<DynString>& files) {
  std::unordered_set<std::string_view> seen;
  std::size_t kept = 0;
  DynString** slots = files.begin();
  for (std::size_t i = 0; i < files.Count(); ++i) {
    if (seen.insert(std::string_view(slots[i]->c_str(), slots[i]->Length())).second) {
      std::swap(slots[kept++], slots[i]);
    }
  }
  files.Shrink(kept);
}

// The element may name a subtitle file rather than a folder.
void AddIfFile(OwningPtrArray<DynString>& files, const DynString& folder) {
  std::string itself(folder.c_str());
  while (!itself.empty() && itself.back() == '/') itself.pop_back();
  if (platform::CanOpenForReading(itself)) files.Add(std::make_unique<DynString>(itself.c_str()));
}

}  // namespace

DynString ResolveDirectory(const char* base, const char* element) {
  DynString folder = WithSlashes(base);
  DynString result = WithSlashes(element);
  if (!ExpandHome(result)) return DynString("");
  if (!(result.Length() > 0 && result.c_str()[0] == '/')) {
    if (folder.IsEmpty()) return DynString("");
    EnsureTrailingSlash(folder);
    result = folder.Concat(result.c_str());
    EnsureTrailingSlash(result);
    if (!Normalize(result)) return DynString("");
  }
  if (!result.IsEmpty()) EnsureTrailingSlash(result);
  return result;
}

void AddMatchingFiles(OwningPtrArray<DynString>& files, const DynString& folder,
                      const char* pattern) {
  const std::string folder_path(folder.c_str());
  for (const std::string& name : platform::FindMatchingFiles(folder_path, pattern)) {
    const std::string path = folder_path + name;
    if (platform::CanOpenForReading(path)) files.Add(std::make_unique<DynString>(path.c_str()));
  }
}

std::size_t AddCandidates(OwningPtrArray<DynString>& files, const DynString& folder,
                          const char* name) {
  for (const char* form : kNameForms) {
    for (const char* extension : kExtensions) {
      DynString pattern(name);
      pattern.Append(form);
      pattern.Append(extension);
      AddMatchingFiles(files, folder, pattern.c_str());
    }
  }
  return files.Count();
}

int FindSubtitleFiles(OwningPtrArray<DynString>& files, const char* searchPath,
                      const char* videoPath) {
  DynString videoFolder;
  DynString baseName;
  SplitVideoPath(videoPath, &videoFolder, &baseName);
  const std::string_view path(searchPath ? searchPath : "");
  std::size_t begin = 0;
  // An empty text after the last ";" is no element; every other text is one.
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find(';', begin), path.size());
    const std::string element(path.substr(begin, end - begin));
    DynString folder = ResolveDirectory(videoFolder.c_str(), element.c_str());
    if (!folder.IsEmpty()) {
      if (!baseName.IsEmpty()) AddCandidates(files, folder, baseName.c_str());
      AddCandidates(files, folder, kSharedBaseName);
      AddIfFile(files, folder);
    }
    begin = end + 1;
  }
  RemoveDuplicates(files);
  return 0;
}

}  // namespace korvalin
