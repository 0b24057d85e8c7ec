#include "subtitles/subtitle_loader.h"

#include <array>
#include <cctype>
#include <cstring>
#include <string_view>

#include "subtitles/readers/jacosub_reader.h"
#include "subtitles/readers/microdvd_ini_reader.h"
#include "subtitles/readers/microdvd_reader.h"
#include "subtitles/readers/ssa_reader.h"
#include "subtitles/readers/subrip_reader.h"
#include "subtitles/readers/sami_reader.h"
#include "subtitles/readers/aqtitle_reader.h"
#include "subtitles/readers/dvdsubtitle_reader.h"
#include "subtitles/readers/realtext_reader.h"
#include "subtitles/readers/tmplayer_reader.h"
#include "subtitles/readers/subviewer_v1_reader.h"
#include "subtitles/readers/subviewer_v2_reader.h"
#include "subtitles/readers/vobsub_reader.h"

namespace korvalin {
namespace {

using SubtitleReader = int (*)(SubtitleTrack&, const char*);

struct ReaderByFormat {
  std::string_view format;
  SubtitleReader read;
};

// Every reader there is, by the format name it sets. A reader joins the extension table
// below by being listed here.
constexpr ReaderByFormat kReaders[] = {
    {"SubRip", ReadSubRip},
    {"SAMI", ReadSami},
    {"AqTitle", ReadAqTitle},
    {"DVDSubtitle", ReadDvdSubtitle},
    {"RealText", ReadRealText},
    {"TMPlayer", ReadTmPlayer},
    {"VobSub", ReadVobSub},
    {"SubViewer 2.0", ReadSubViewer2},
    {"SubViewer 1.0", ReadSubViewer1},
    {"MicroDVD", ReadMicroDvd},
    {"MicroDVD-INI", ReadMicroDvdIni},
    {"Sub Station Alpha", ReadSubStationAlpha},
    {"JACOsub", ReadJacoSub},
};

struct ExtensionRow {
  std::string_view extension;
  std::array<std::string_view, 6> formats;  // tried in this order; empty slots end the row
};

constexpr ExtensionRow kExtensionTable[] = {
    {".SUB", {"SubViewer 2.0", "SubViewer 1.0", "DVDSubtitle", "VobSub", "SubRip", "MicroDVD"}},
    {".SRT", {"SubRip", "SubViewer 2.0", "MicroDVD", "SubViewer 1.0", "DVDSubtitle"}},
    {".TXT", {"MicroDVD", "TMPlayer", "SubRip", "SubViewer 2.0", "SubViewer 1.0", "DVDSubtitle"}},
    {".SMI", {"SAMI"}},
    {".SSA", {"Sub Station Alpha"}},
    {".JS", {"JACOsub"}},
    {".RT", {"RealText"}},
    {".AQT", {"AqTitle"}},
    {".INI", {"MicroDVD-INI"}},
    {".MDV", {"MicroDVD-INI"}},
};

SubtitleReader FindReader(std::string_view format) {
  for (const ReaderByFormat& reader : kReaders) {
    if (reader.format == format) return reader.read;
  }
  return nullptr;
}

// Upper case as the system's 8-bit code page has it: ASCII letters, and the Latin letters of
// the upper half that have a capital 0x20 (or 0x10) below them.
unsigned char ToUpperCodePage(unsigned char c) {
  if (c < 128) return static_cast<unsigned char>(std::toupper(c));
  if (c == 0xBA || c == 0xBF) return static_cast<unsigned char>(c - 0x10);
  if ((c >= 0xE0 && c <= 0xF5) || (c >= 0xF8 && c <= 0xFE)) {
    return static_cast<unsigned char>(c - 0x20);
  }
  return c;
}

}  // namespace

DynString ExtensionKey(const char* path) {
  DynString key = DynString(path).Right(4);
  int dot = 0;
  while ((dot = key.Find(".")) > 0) key = key.Mid(dot);
  DynString upper("");
  for (std::size_t i = 0; i < key.Length(); ++i) {
    upper.AppendChar(static_cast<char>(ToUpperCodePage(static_cast<unsigned char>(key.c_str()[i]))));
  }
  return upper;
}

int LoadSubtitleFile(SubtitleTrack& track, const char* path) {
  track.Reset();
  if (!path) return -1;
  const DynString key = ExtensionKey(path);
  for (const ExtensionRow& row : kExtensionTable) {
    if (key != row.extension.data()) continue;
    int result = -1;
    for (std::string_view format : row.formats) {
      if (format.empty()) break;
      const SubtitleReader read = FindReader(format);
      if (!read) continue;  // that format has no reader yet
      result = read(track, path);
      if (result == 0) return 0;
    }
    track.Reset();
    return result;
  }
  track.Reset();
  return -1;
}

}  // namespace korvalin
