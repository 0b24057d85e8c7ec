#include "text/entity_decoding.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace korvalin {
namespace {

TEST(DecodeEntities, ReplacesKnownEntitiesAndTrims) {
  const struct {
    const char* source;
    const char* text;
  } cases[] = {
      {"&auml;&Auml;", "\xE4\xC4"},
      {"&AUML;", "&AUML;"},
      {"&otilde;&Otilde;&ouml;&Ouml;&uuml;&Uuml;", "\xF5\xD5\xF6\xD6\xFC\xDC"},
      {"&quot;a&nbsp;b&quot;", "\"a b\""},
      {"&lt;x&gt; &eacute;", "&lt;x&gt; &eacute;"},
      {"&#228;", "\xE4"},
      {"&#8364;", "\x80"},  // the euro sign in Windows-1252
      {"&#9731;x", "?x"},   // not in the code page
      {"a&#0;b&#70000;c&#x41;d", "abcd"},
      {"&#65", "A"},
      {"&#65xyz;B", "AB"},
      {"&amp;quot;", "&quot;"},
      {"&amp;#65;", "&#65;"},
      {"  &nbsp;x&nbsp; \n", "x"},
      {"&", "&"},
      {"&#", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeEntities(c.source), c.text) << c.source;
  EXPECT_EQ(DecodeEntities(nullptr), "");
}

TEST(DecodeEntities, WideReferencesUseTheSystemCodePage) {
  setenv("KORVALIN_CODEPAGE", "1251", 1);
  EXPECT_EQ(DecodeEntities("&#1046;&#228;"), "\xC6\xE4");  // Cyrillic Zhe; 228 stays a byte
  unsetenv("KORVALIN_CODEPAGE");
}

}  // namespace
}  // namespace korvalin
