#include "platform/file_search.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "base/string_compare.h"

namespace korvalin::platform {
namespace fs = std::filesystem;

bool WildcardMatchNoCase(std::string_view pattern, std::string_view name) {
  // Greedy matching with one backtrack point: linear in practice, never exponential.
  std::size_t p = 0;
  std::size_t n = 0;
  std::size_t star = std::string_view::npos;
  std::size_t resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = n;
    } else if (p < pattern.size() &&
               (pattern[p] == '?' || ToLowerAscii(pattern[p]) == ToLowerAscii(name[n]))) {
      ++p;
      ++n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

std::vector<std::string> FindMatchingFiles(const std::string& folder, std::string_view pattern) {
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator it(folder.empty() ? fs::path(".") : fs::path(folder), error);
  for (; !error && it != fs::directory_iterator(); it.increment(error)) {
    std::error_code kind_error;
    if (it->is_directory(kind_error)) continue;
    std::string name = it->path().filename().string();
    if (WildcardMatchNoCase(pattern, name)) names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());  // std::string compares bytes as unsigned
  return names;
}

bool CanOpenForReading(const std::string& path) {
  std::error_code error;
  if (path.empty() || fs::is_directory(path, error)) return false;
  std::FILE* stream = std::fopen(path.c_str(), "rb");
  if (!stream) return false;
  std::fclose(stream);
  return true;
}

std::string FindFileNoCase(const std::string& path) {
  std::error_code error;
  if (fs::exists(path, error)) return path;
  const fs::path full(path);
  const std::string wanted = full.filename().string();
  std::vector<std::string> names;
  std::error_code list_error;
  const fs::path folder = full.has_parent_path() ? full.parent_path() : fs::path(".");
  for (fs::directory_iterator it(folder, list_error);
       !list_error && it != fs::directory_iterator(); it.increment(list_error)) {
    std::string name = it->path().filename().string();
    if (EqualsIgnoreCase(name, wanted)) names.push_back(std::move(name));
  }
  if (names.empty()) return path;
  std::sort(names.begin(), names.end());
  return (full.has_parent_path() ? (full.parent_path() / names.front()) : fs::path(names.front()))
      .string();
}

}  // namespace korvalin::platform
