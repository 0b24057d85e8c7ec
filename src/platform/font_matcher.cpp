#include "platform/font_matcher.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

namespace korvalin::platform {
namespace {

// A face drawn at least this much lighter than asked for gets synthetic emboldening, as a
// bold request on a family with only a regular face does.
constexpr int kEmboldenWeightGap = 200;

struct PatternDeleter {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
struct FontSetDeleter {
  void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
struct CharSetDeleter {
  void operator()(FcCharSet* set) const { FcCharSetDestroy(set); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

// Loads the configuration once. It is released at exit, since fontconfig otherwise keeps
// blocks of its parsed configuration that leak checkers report.
bool InitFontconfig() {
  static const bool initialised = [] {
    if (FcInit() != FcTrue) return false;
    std::atexit(FcFini);
    return true;
  }();
  return initialised;
}

// The request with the configuration's substitutions applied, ready to match.
Pattern RequestPattern(std::string_view face, int weight, bool italic) {
  Pattern pattern(FcPatternCreate());
  const std::string family(face);
  if (!family.empty()) {
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  }
  const double clamped = std::clamp(weight, 1, 1000);
  FcPatternAddDouble(pattern.get(), FC_WEIGHT, FcWeightFromOpenTypeDouble(clamped));
  FcPatternAddInteger(pattern.get(), FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
  return pattern;
}

void PrepareForMatch(FcPattern* pattern) {
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
}

bool GetBool(const FcPattern* pattern, const char* object, bool fallback) {
  FcBool value;
  return FcPatternGetBool(pattern, object, 0, &value) == FcResultMatch ? value == FcTrue : fallback;
}

double FontconfigWeight(const FcPattern* pattern) {
  int whole;
  if (FcPatternGetInteger(pattern, FC_WEIGHT, 0, &whole) == FcResultMatch) return whole;
  double value;
  if (FcPatternGetDouble(pattern, FC_WEIGHT, 0, &value) == FcResultMatch) return value;
  return FC_WEIGHT_REGULAR;
}

// Whether the face found is drawn upright: its own slant is roman, or the configuration
// asks for a shear matrix to fake one (a synthetic oblique, which also reports a slant).
bool IsUpright(const FcPattern* found) {
  int slant = FC_SLANT_ROMAN;
  FcPatternGetInteger(found, FC_SLANT, 0, &slant);
  FcMatrix* matrix = nullptr;
  const bool sheared =
      FcPatternGetMatrix(found, FC_MATRIX, 0, &matrix) == FcResultMatch && matrix->xy != 0;
  return slant == FC_SLANT_ROMAN || sheared;
}

std::optional<FontMatch> ToFontMatch(const FcPattern* found, int weightAsked, bool italicAsked) {
  FcChar8* file = nullptr;
  if (FcPatternGetString(found, FC_FILE, 0, &file) != FcResultMatch) return std::nullopt;
  if (!GetBool(found, FC_SCALABLE, true) || GetBool(found, FC_COLOR, false)) return std::nullopt;
  FontMatch match;
  match.file = reinterpret_cast<const char*>(file);
  FcPatternGetInteger(found, FC_INDEX, 0, &match.index);
  FcChar8* family = nullptr;
  if (FcPatternGetString(found, FC_FAMILY, 0, &family) == FcResultMatch) {
    match.family = reinterpret_cast<const char*>(family);
  }
  match.weight = static_cast<int>(FcWeightToOpenTypeDouble(FontconfigWeight(found)) + 0.5);
  match.embolden = weightAsked - match.weight >= kEmboldenWeightGap;
  match.oblique = italicAsked && IsUpright(found);
  return match;
}

}  // namespace

std::optional<FontMatch> MatchFont(std::string_view face, int weight, bool italic) {
  if (!InitFontconfig()) return std::nullopt;
  Pattern pattern = RequestPattern(face, weight, italic);
  PrepareForMatch(pattern.get());
  FcResult result;
  Pattern found(FcFontMatch(nullptr, pattern.get(), &result));
  if (!found) return std::nullopt;
  return ToFontMatch(found.get(), weight, italic);
}

std::optional<FontMatch> MatchFallbackFont(std::string_view face, int weight, char32_t codePoint,
                                           bool italic) {
  if (!InitFontconfig()) return std::nullopt;
  Pattern pattern = RequestPattern(face, weight, italic);
  std::unique_ptr<FcCharSet, CharSetDeleter> wanted(FcCharSetCreate());
  FcCharSetAddChar(wanted.get(), codePoint);
  FcPatternAddCharSet(pattern.get(), FC_CHARSET, wanted.get());
  PrepareForMatch(pattern.get());
  FcResult result;
  std::unique_ptr<FcFontSet, FontSetDeleter> sorted(
      FcFontSort(nullptr, pattern.get(), FcFalse, nullptr, &result));
  if (!sorted) return std::nullopt;
  for (int i = 0; i < sorted->nfont; ++i) {
    const FcPattern* candidate = sorted->fonts[i];
    FcCharSet* charset = nullptr;
    if (FcPatternGetCharSet(candidate, FC_CHARSET, 0, &charset) != FcResultMatch ||
        !FcCharSetHasChar(charset, codePoint)) {
      continue;
    }
    if (std::optional<FontMatch> match = ToFontMatch(candidate, weight, italic)) return match;
  }
  return std::nullopt;
}

}  // namespace korvalin::platform
