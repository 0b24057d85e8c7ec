#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvalin::platform {

// "*" matches any run of characters, "?" any one; letters match without regard to case, as
// the Windows file search does.
bool WildcardMatchNoCase(std::string_view pattern, std::string_view name);

// Names of the entries of folder that match pattern and are not folders, sorted by their
// bytes, so that results do not depend on the file system's order. A missing or unreadable
// folder gives none.
std::vector<std::string> FindMatchingFiles(const std::string& folder, std::string_view pattern);

// True when path names something other than a folder that opens for reading.
bool CanOpenForReading(const std::string& path);

// path itself when it exists, else an entry of its folder whose name differs only in
// letter case (the first by bytes), else path unchanged. For names the system builds itself.
std::string FindFileNoCase(const std::string& path);

}  // namespace korvalin::platform
