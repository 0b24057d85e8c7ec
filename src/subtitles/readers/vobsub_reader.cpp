#include "subtitles/readers/vobsub_reader.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "base/std_file.h"
#include "platform/file_search.h"
#include "render/picture.h"
#include "render/subpicture_decoder.h"
#include "subtitles/line_reader.h"
#include "subtitles/readers/vobsub_index.h"
#include "subtitles/subtitle_file.h"

namespace korvalin {

namespace {

int Fail(SubtitleTrack& track) {
  track.Reset();
  return -1;
}

// base + extension, or the file of that name in another letter case when only such exists.
std::string Beside(const std::string& base, const char* extension) {
  return platform::FindFileNoCase(base + extension);
}

// Size after scaling by percent, rounded; kept within 32 bits (ScaleTo refuses what is too
// large).
int32_t Scaled(int32_t size, int32_t percent) {
  const int64_t scaled = (int64_t{size} * percent + 50) / 100;
  return static_cast<int32_t>(std::clamp<int64_t>(scaled, INT32_MIN, INT32_MAX));
}

}  // namespace

int ReadVobSub(SubtitleTrack& track, const char* path) {
  track.Reset();
  if (!path) return -1;
  StdFile sub;
  if (sub.Open(path, "rb") != 0) return Fail(track);
  const std::string full(path);
  const std::string base = full.substr(0, full.size() >= 4 ? full.size() - 4 : 0);
  StdFile index;
  if (OpenSubtitleFile(index, Beside(base, ".IDX").c_str(), "rt") != 0) return Fail(track);
  const long indexStart = index.Tell();  // after any byte order mark

  DynString first;
  if (ReadLineString(index, first) != 0) return Fail(track);
  first.TrimLeft();
  first.TrimRight();
  const int32_t version = ParseVobSubVersion(first.c_str());
  if (version < 3 || version > 6) return Fail(track);
  track.fileName.Assign(path);
  char formatName[32];
  std::snprintf(formatName, sizeof formatName, "VobSub %d", static_cast<int>(version));
  track.formatName.Assign(formatName);

  VobSubHeader header;
  if (version < 6) {
    StdFile ifo;
    if (ifo.Open(Beside(base, ".IFO").c_str(), "rb") != 0) return Fail(track);
    if (ReadIfoPalette(ifo, header.palette) != 0) return Fail(track);
  }
  if (ReadVobSubHeader(index, header) != 0) return Fail(track);
  if (!header.palette.read) return Fail(track);
  for (const DynString& name : header.streamNames) {
    track.streamNames.Add(std::make_unique<DynString>(name));
  }
  track.streamIndex = ChooseVobSubStream(header.streamNames, track.preferredLanguage.c_str());

  if (index.Seek(indexStart, SEEK_SET) != 0) return Fail(track);
  std::vector<VobSubTimestamp> timestamps;
  const char* streamName =
      header.streamNames.empty()
          ? nullptr
          : header.streamNames[static_cast<std::size_t>(track.streamIndex)].c_str();
  if (streamName && ReadVobSubStream(index, streamName, timestamps) != 0) return Fail(track);
  index.Close();

  for (const VobSubTimestamp& stamp : timestamps) {
    auto picture = std::make_unique<Picture>();
    int32_t duration = 0;
    ReadSubpicture(*picture, duration, stamp.filePosition, sub, header.palette);  // not checked
    // Wraps as 32-bit arithmetic would rather than overflow.
    const int32_t stop = duration != 0 ? static_cast<int32_t>(static_cast<uint32_t>(stamp.start) +
                                                              static_cast<uint32_t>(duration))
                                       : 0;
    picture->CropToContent();
    if (header.smooth) picture->SmoothEdges();
    if (header.scale != 100) {
      picture->ScaleTo(Scaled(picture->width, header.scale), Scaled(picture->height, header.scale));
    }
    track.AddEntry(std::make_unique<SubtitleEntry>(stamp.start, stop, std::move(picture)));
  }
  sub.Close();
  track.CloseOpenEnds();
  track.RemoveEmpty();
  return track.entries.IsEmpty() ? 1 : 0;
}

}  // namespace korvalin
