#include "subtitles/readers/sami_reader.h"

#include <memory>

#include "base/std_file.h"
#include "base/string_search.h"
#include "subtitles/sami_parser.h"
#include "text/entity_decoding.h"
#include "text/markup_text.h"

namespace korvalin {
namespace {

constexpr int64_t kUnitsPerMs = 10000;

// Records the parser's streams and enables the preferred language when the file has it.
void SelectStream(SubtitleTrack& track, SamiParser& parser) {
  for (std::size_t i = 0; i < parser.StreamCount(); ++i) {
    track.streamNames.Add(std::make_unique<DynString>(parser.StreamName(i).c_str()));
    if (i == parser.EnabledStream()) track.streamIndex = static_cast<int32_t>(i);
  }
  for (std::size_t i = 0; i < parser.StreamCount(); ++i) {
    if (CompareTextNoCase(parser.StreamName(i).c_str(), track.preferredLanguage.c_str()) == 0) {
      parser.Enable(i);
      track.streamIndex = static_cast<int32_t>(i);
      return;
    }
  }
}

// Each caption as plain text; captions whose markup renders to nothing add no entry.
void AddCaptions(SubtitleTrack& track, const SamiParser& parser) {
  MarkupText markup;
  for (const SamiCaption& caption : parser.Captions()) {
    markup.Parse(caption.markup.c_str());
    const DynString text = DecodeEntities(markup.text.c_str());
    if (text.IsEmpty()) continue;
    track.AddEntry(std::make_unique<SubtitleEntry>(
        static_cast<int32_t>(caption.start / kUnitsPerMs),
        static_cast<int32_t>(caption.stop / kUnitsPerMs), text.c_str()));
  }
}

}  // namespace

int ReadSami(SubtitleTrack& track, const char* path) {
  track.Reset();
  StdFile probe;
  if (!path || probe.Open(path, "rb") != 0) return -1;
  probe.Close();
  track.fileName.Assign(path);
  track.formatName.Assign("SAMI");
  SamiParser parser;
  if (!parser.Load(path)) return -1;
  SelectStream(track, parser);
  AddCaptions(track, parser);
  track.SortByStart();
  track.RemoveEmpty();
  return track.entries.IsEmpty() ? 1 : 0;
}

}  // namespace korvalin
