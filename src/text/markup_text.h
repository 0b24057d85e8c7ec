#pragma once

#include "base/dyn_string.h"

namespace korvalin {

// Turns HTML-like caption markup into plain text: runs of white space collapse to one space,
// and tags become line breaks, "- " list and cell marks or word gaps (OnTag). Readers that need
// other tags derive and override OnTag.
class MarkupText {
 public:
  MarkupText() = default;
  MarkupText(const MarkupText&) = delete;
  MarkupText& operator=(const MarkupText&) = delete;
  virtual ~MarkupText() = default;

  // Empties text, then appends the plain characters of input and hands every complete tag to
  // OnTag. Null input leaves text empty; a tag still open at the end is dropped.
  void Parse(const char* input);

  // tag runs from "<" to ">" inclusive, lower-cased, control bytes turned into spaces.
  virtual void OnTag(const char* tag);

  // True when tag names the element name (lower case, no "<"): "<br>", "<br/>" and
  // "<br clear=all>" name "br", "<brx>" does not.
  static bool TagIs(const char* tag, const char* name);

  // The value of attribute name (lower case) in tag, or "" when the tag has none. An unquoted
  // value ends at a space or, for the last attribute, runs on to the end of the tag (">"
  // included): number scanners stop there.
  static DynString GetAttribute(const char* tag, const char* name);

  DynString text;

 protected:
  // A line feed unless text is empty or already ends with one.
  void BreakLine();

 private:
  void AppendSpace();
};

}  // namespace korvalin
