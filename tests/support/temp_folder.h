#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace korvalin::testing {

// A private folder for fixture files, removed afterwards.
class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("korvalin-test-" + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }
  // Writes bytes to name (folders created) and returns the full path.
  std::filesystem::path Write(const std::string& name, const std::string& bytes) const {
    const auto file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace korvalin::testing
