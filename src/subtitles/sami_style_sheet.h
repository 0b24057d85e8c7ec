#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvalin {

// A caption class of a SAMI style sheet, such as ".ENUSCC {Name: English; lang: en-US;}".
struct SamiClass {
  std::string key;   // the class name in lower case, as paragraphs are matched to it
  std::string name;  // the stream's name: its Name, else its lang, else the class name
};

// The class selectors of the CSS text of a STYLE block, in order of first appearance. Comments
// ("/* */" and the "<!-- -->" that hide CSS from old browsers) are skipped; a rule without its
// closing brace runs to the end of the text.
std::vector<SamiClass> ReadSamiClasses(std::string_view css);

// The letters of text in lower case (ASCII only, other bytes unchanged).
std::string LowerAscii(std::string_view text);

}  // namespace korvalin
