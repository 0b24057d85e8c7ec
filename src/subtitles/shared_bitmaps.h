#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "render/picture.h"
#include "subtitles/byte_budget.h"

namespace korvalin {

// The bitmap files a subtitle file names (Sub Station Alpha picture events, DVDSubtitle
// picture blocks), each loaded once however often it is named, and in whatever spelling, and
// shared by every entry that shows it. Their pixels count against the track's budget.
class SharedBitmaps {
 public:
  // locate turns a name as the subtitle file writes it into the path to open ("" for none).
  using Locate = std::function<std::string(const std::string& name)>;

  explicit SharedBitmaps(Locate locate, std::size_t byteLimit = kTrackPictureByteLimit);

  // The picture of the bitmap named name: empty when it does not load, and also once the
  // budget is exceeded (see Exceeded), after which nothing more is loaded.
  std::shared_ptr<const Picture> Get(const std::string& name);

  bool Exceeded() const { return budget_.Exceeded(); }

 private:
  std::shared_ptr<const Picture> Load(const std::string& path);

  Locate locate_;
  ByteBudget budget_;
  std::unordered_map<std::string, std::shared_ptr<const Picture>> byName_;
  std::unordered_map<std::string, std::shared_ptr<const Picture>> byFile_;  // canonical paths
  std::shared_ptr<const Picture> empty_ = std::make_shared<const Picture>();
};

}  // namespace korvalin
