#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvalin::platform {

// A font file chosen for a face name and weight.
struct FontMatch {
  std::string file;
  int index = 0;          // face within the file
  std::string family;     // the family found, e.g. "Liberation Sans" for "Arial"
  int weight = 400;       // OpenType weight of the face found
  bool embolden = false;  // the family lacks the weight asked for: thicken the strokes
  bool oblique = false;   // italic asked of a family without one: slant the upright face
};

// The installed face that fontconfig finds for a name, an OpenType weight (100..900) and a
// slant, its substitute when the name is not installed. Nothing when no scalable font exists.
std::optional<FontMatch> MatchFont(std::string_view face, int weight, bool italic = false);

// A scalable, non-colour face that holds the code point, preferring the name, weight and
// slant given; nothing when no installed font holds it.
std::optional<FontMatch> MatchFallbackFont(std::string_view face, int weight, char32_t codePoint,
                                           bool italic = false);

}  // namespace korvalin::platform
