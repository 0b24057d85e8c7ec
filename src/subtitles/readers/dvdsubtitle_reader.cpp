#include "subtitles/readers/dvdsubtitle_reader.h"

#include <algorithm>
#include <memory>
#include <string>

#include "base/number_scan.h"
#include "base/std_file.h"
#include "platform/file_search.h"
#include "render/picture.h"
#include "subtitles/byte_budget.h"
#include "subtitles/readers/text_reader_support.h"
#include "subtitles/shared_bitmaps.h"
#include "subtitles/subtitle_file.h"
#include "subtitles/time_scanners.h"

namespace korvalin {
namespace {

bool IsBlank(char c) {
  return static_cast<unsigned char>(c) <= 0x20;
}

std::string Trimmed(const std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), IsBlank);
  const auto last = std::find_if_not(text.rbegin(), text.rend(), IsBlank).base();
  return first < last ? std::string(first, last) : std::string();
}

// The number after key in text ("%d"), or false when key is absent or no number follows.
bool FindNumberAfter(const std::string& text, const char* key, int32_t* value) {
  const std::size_t at = text.find(key);
  return at != std::string::npos &&
         ScanInt(text.c_str() + at + std::char_traits<char>::length(key), value);
}

int32_t WrapToInt32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}

// The folder part of path, separator included; "\" separates as well as "/".
std::string FolderOf(const char* path) {
  const std::string whole(path);
  const std::size_t last = whole.find_last_of("\\/");
  return last == std::string::npos ? std::string() : whole.substr(0, last + 1);
}

class DvdSubtitleParser {
 public:
  DvdSubtitleParser(SubtitleTrack& track, std::size_t pictureByteLimit)
      : track_(track),
        folder_(FolderOf(track.fileName.c_str())),
        bitmaps_([this](const std::string& name) { return Locate(name); }, pictureByteLimit) {}

  // 0 at the end of the file, -1 at the first block that breaks the format.
  int ReadBlocks(StdFile& file) {
    std::string content;
    bool insideBlock = false;
    char byte = 0;
    while (file.ReadByte(&byte) == 0) {
      if (!insideBlock) {
        if (byte == '{') content.clear();
        insideBlock = byte == '{';
      } else if (byte != '}') {
        content.push_back(byte);
      } else {
        insideBlock = false;
        if (!ReadBlock(content)) return -1;
      }
    }
    return 0;  // an unclosed block is dropped
  }

 private:
  bool ReadBlock(const std::string& content) {
    if (content.compare(0, 2, "T ") == 0) return ReadSubtitleBlock(content);
    if (content.compare(0, 4, "HEAD") == 0) return ReadHeadBlock(content);
    return true;  // empty or unknown blocks are skipped
  }

  bool ReadSubtitleBlock(const std::string& content) {
    const std::size_t lineEnd = content.find('\n');
    if (lineEnd == std::string::npos) return true;
    const std::string header = Trimmed(content.substr(2, lineEnd - 2));
    const int32_t start = ScanColonCentisTime(header.c_str());
    if (start == -1) return false;
    int32_t stop = 0;  // open until the next block
    if (header.find(" D=") != std::string::npos) {
      int32_t centis = 0;
      if (!FindNumberAfter(header, " D=", &centis)) return false;
      stop = WrapToInt32(int64_t{start} + int64_t{centis} * 10);
    }
    const std::size_t picture = header.find(" P=");
    if (picture != std::string::npos) return AddPicture(start, stop, header.substr(picture + 3));
    const std::string text = Trimmed(content.substr(lineEnd + 1));
    track_.AddEntry(std::make_unique<SubtitleEntry>(start, stop, text.c_str()));
    return true;
  }

  // Added whether or not the picture loads; an empty one is dropped with the empty entries.
  // False once the file's pictures exceed what a track may hold.
  bool AddPicture(int32_t start, int32_t stop, const std::string& afterKey) {
    const std::string name(afterKey.begin(),
                           std::find_if(afterKey.begin(), afterKey.end(), IsBlank));
    std::shared_ptr<const Picture> picture = bitmaps_.Get(name);
    if (bitmaps_.Exceeded()) return false;
    track_.AddEntry(std::make_unique<SubtitleEntry>(start, stop, std::move(picture)));
    return true;
  }

  // The file a picture name means, in the subtitle file's folder; "" when it does not open.
  std::string Locate(std::string name) const {
    if (name.empty()) return {};
    std::replace(name.begin(), name.end(), '\\', '/');
    const std::string path = platform::FindFileNoCase(folder_ + name);
    return platform::CanOpenForReading(path) ? path : std::string();
  }

  // The header may only come before the first subtitle.
  bool ReadHeadBlock(const std::string& content) {
    if (!track_.entries.IsEmpty()) return false;
    int32_t centis = 0;
    if (FindNumberAfter(content, "SUBDELAY=", &centis)) {
      track_.fileDelay = WrapToInt32(int64_t{centis} * 10);
    }
    return true;
  }

  SubtitleTrack& track_;
  std::string folder_;  // of the subtitle file, separator included
  SharedBitmaps bitmaps_;
};

}  // namespace

int ReadDvdSubtitle(SubtitleTrack& track, const char* path) {
  return ReadDvdSubtitle(track, path, kTrackPictureByteLimit);
}

int ReadDvdSubtitle(SubtitleTrack& track, const char* path, std::size_t pictureByteLimit) {
  StdFile file;
  if (BeginReading(track, file, path, "rt", "DVDSubtitle") != 0) return -1;
  DvdSubtitleParser parser(track, pictureByteLimit);
  if (parser.ReadBlocks(file) != 0) return -1;
  return FinishReading(track, file, CleanUp::kSortCloseOpenEndsAndRemoveEmpty);
}

}  // namespace korvalin
