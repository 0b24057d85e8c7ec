#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "subtitles/sami_style_sheet.h"

namespace korvalin {

// One paragraph of a SYNC: "<P Class=ENCC>text".
struct SamiParagraph {
  std::string classKey;  // lower case; empty when the paragraph names no class (every stream)
  std::string markup;    // its opening tag, then its content with the ends trimmed
};

// One SYNC element: its start and its paragraphs. A SYNC without paragraphs holds one
// paragraph without class and tag, its whole content, so that it counts for every stream
// (an "&nbsp;" there clears every language).
struct SamiSync {
  int32_t startMs = 0;
  std::vector<SamiParagraph> paragraphs;
};

// The parts of a SAMI file that captions are made of.
struct SamiDocument {
  bool hasSamiTags = false;            // a SAMI or SYNC tag was seen
  std::vector<SamiClass> classes;      // of every STYLE block, in order
  std::vector<SamiClass> usedClasses;  // the classes paragraphs name, in order of first use,
                                       // named as first written
  std::vector<SamiSync> syncs;         // in file order
};

// Reads the markup of a SAMI file: tags in any letter case, comments skipped, missing closing
// tags implied (a paragraph ends at the next P, the SYNC at the next SYNC). A SYNC without a
// readable Start is left out. White space around a <br> is dropped, so that the lines of a
// caption neither start nor end with the source file's indentation.
SamiDocument ReadSamiDocument(std::string_view bytes);

}  // namespace korvalin
