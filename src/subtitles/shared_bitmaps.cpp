#include "subtitles/shared_bitmaps.h"

#include <filesystem>
#include <utility>

namespace korvalin {
namespace {

// One key for every spelling of a file ("a.bmp", "./a.bmp", a link to it); the path itself
// when the file does not exist.
std::string FileKey(const std::string& path) {
  std::error_code error;
  const std::filesystem::path canonical = std::filesystem::canonical(path, error);
  return error ? path : canonical.string();
}

}  // namespace

SharedBitmaps::SharedBitmaps(Locate locate, std::size_t byteLimit)
    : locate_(std::move(locate)), budget_(byteLimit) {}

std::shared_ptr<const Picture> SharedBitmaps::Get(const std::string& name) {
  if (budget_.Exceeded()) return empty_;
  const auto known = byName_.find(name);
  if (known != byName_.end()) return known->second;
  std::shared_ptr<const Picture> picture = Load(locate_(name));
  byName_.emplace(name, picture);
  return picture;
}

std::shared_ptr<const Picture> SharedBitmaps::Load(const std::string& path) {
  if (path.empty()) return empty_;
  const std::string key = FileKey(path);
  const auto known = byFile_.find(key);
  if (known != byFile_.end()) return known->second;
  auto loaded = std::make_shared<Picture>();
  loaded->LoadBitmapFile(path.c_str());
  std::shared_ptr<const Picture> picture = std::move(loaded);
  if (!picture->HasPixels()) picture = empty_;
  if (!budget_.Spend(PixelBytes(*picture))) picture = empty_;
  byFile_.emplace(key, picture);
  return picture;
}

}  // namespace korvalin
