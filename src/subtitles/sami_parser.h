#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "subtitles/sami_document.h"

namespace korvalin {

// One caption of the enabled stream: its markup and its times in 100-ns units.
struct SamiCaption {
  std::string markup;
  int64_t start = 0;
  int64_t stop = 0;
};

// Reads SAMI files and offers their caption streams as a media pipeline's SAMI parser does:
// the stream names with the enabled one, and the captions of the stream enabled.
//
// The streams are the caption classes that paragraphs use: those the STYLE block declares
// first, in its order, named by their Name, else lang, else the class; then classes used but
// never declared, named as written. A file whose paragraphs name no class has one stream
// without a name (StreamCount 0). The first stream is enabled until Enable chooses another.
//
// A caption lasts until 1 unit before the next SYNC that holds something for its stream (a
// paragraph of its class, one without class, or a SYNC without paragraphs); the last one of a
// stream lasts to the end of the video.
class SamiParser {
 public:
  // Reads the file's bytes. False when it cannot be read or holds no SAMI or SYNC tag.
  bool Load(const char* path);
  // The same on a file's content: in the system code page or UTF-8 (a byte order mark is
  // skipped), or UTF-16 or UTF-32 with its byte order mark, read as UTF-8.
  bool Parse(std::string_view bytes);

  std::size_t StreamCount() const { return streams_.size(); }
  const std::string& StreamName(std::size_t index) const { return streams_[index].name; }
  std::size_t EnabledStream() const { return enabled_; }
  void Enable(std::size_t index);

  // The captions of the enabled stream, by start. In a UTF-8 file, character references above
  // ASCII are written as UTF-8 (see ReferencesAsUtf8).
  std::vector<SamiCaption> Captions() const;

 private:
  void BuildStreams(const SamiDocument& document);
  // The markup of a SYNC for the enabled stream: its paragraphs of that stream, joined.
  bool MarkupFor(const SamiSync& sync, std::string* markup) const;

  std::vector<SamiClass> streams_;
  std::vector<SamiSync> syncs_;
  std::size_t enabled_ = 0;
  bool utf8_ = false;  // the file is UTF-8: character references stay UTF-8 too
};

}  // namespace korvalin
