#include "subtitles/readers/vobsub_reader.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "base/limited_read_file.h"
#include "base/std_file.h"
#include "platform/file_search.h"
#include "subtitles/line_reader.h"
#include "subtitles/byte_budget.h"
#include "subtitles/readers/vobsub_index.h"
#include "subtitles/readers/vobsub_units.h"
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

}  // namespace

int ReadVobSub(SubtitleTrack& track, const char* path) {
  return ReadVobSub(track, path, kTrackPictureByteLimit);
}

int ReadVobSub(SubtitleTrack& track, const char* path, std::size_t pictureByteLimit) {
  track.Reset();
  if (!path) return -1;
  LimitedReadFile sub;
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

  VobSubUnits units(sub, header, pictureByteLimit);
  for (const VobSubTimestamp& stamp : timestamps) {
    const VobSubUnit& unit = units.At(stamp.filePosition);
    if (units.Exhausted()) return Fail(track);
    // Wraps as 32-bit arithmetic would rather than overflow.
    const int32_t stop = unit.duration != 0
                             ? static_cast<int32_t>(static_cast<uint32_t>(stamp.start) +
                                                    static_cast<uint32_t>(unit.duration))
                             : 0;
    track.AddEntry(std::make_unique<SubtitleEntry>(stamp.start, stop, unit.picture));
  }
  sub.Close();
  track.CloseOpenEnds();
  track.RemoveEmpty();
  return track.entries.IsEmpty() ? 1 : 0;
}

}  // namespace korvalin
