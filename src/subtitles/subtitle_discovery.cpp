#include "subtitles/subtitle_discovery.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "platform/file_search.h"

namespace korvalin {
namespace {

constexpr const char* kExtensions[] = {".srt", ".sub", ".txt", ".smi", ".ssa",
                                       ".js",  ".rt",  ".aqt", ".ini", ".mdv"};
constexpr const char* kNameForms[] = {"", ".*", "-*"};
constexpr const char* kSharedBaseName = "Subtitles";

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

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
  DynString result(text ? text : "");
  result.Replace("\\", "/", DynString::kReplaceAll);
  return result;
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

// Removes "/./" and folds "/../" into the folder before it; false when climbing above "/".
bool Normalize(DynString& path) {
  path.Replace("/./", "/", DynString::kReplaceAll);
  int up = 0;
  while ((up = path.Find("/../")) >= 0) {
    int parent = up - 1;
    while (parent >= 0 && path.c_str()[parent] != '/') --parent;
    if (parent < 0) return false;
    path = path.Left(parent).Concat(path.c_str() + up + 3);
  }
  return true;
}

// Keeps the first of byte-equal paths, in place.
void RemoveDuplicates(OwningPtrArray<DynString>& files) {
  std::size_t kept = 0;
  DynString** slots = files.begin();
  for (std::size_t i = 0; i < files.Count(); ++i) {
    bool seen = false;
    for (std::size_t k = 0; k < kept && !seen; ++k) seen = *slots[k] == *slots[i];
    if (!seen) std::swap(slots[kept++], slots[i]);
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
  const DynString path(searchPath ? searchPath : "");
  int begin = 0;
  // An empty text after the last ";" is no element; every other text is one.
  while (static_cast<std::size_t>(begin) < path.Length()) {
    int end = path.Find(";", begin);
    if (end < 0) end = static_cast<int>(path.Length());
    const DynString element = path.Mid(begin, end - begin);
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
