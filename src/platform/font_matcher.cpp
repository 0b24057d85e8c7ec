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
Pattern RequestPattern(std::string_view face, int weight) {
  Pattern pattern(FcPatternCreate());
  const std::string family(face);
  if (!family.empty()) {
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  }
  const double clamped = std::clamp(weight, 1, 1000);
  FcPatternAddDouble(pattern.get(), FC_WEIGHT, FcWeightFromOpenTypeDouble(clamped));
  FcPatternAddInteger(pattern.get(), FC_SLANT, FC_SLANT_ROMAN);
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

std::optional<FontMatch> ToFontMatch(const FcPattern* found, int weightAsked) {
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
  return match;
}

}  // namespace

std::optional<FontMatch> MatchFont(std::string_view face, int weight) {
  if (!InitFontconfig()) return std::nullopt;
  Pattern pattern = RequestPattern(face, weight);
  PrepareForMatch(pattern.get());
  FcResult result;
  Pattern found(FcFontMatch(nullptr, pattern.get(), &result));
  if (!found) return std::nullopt;
  return ToFontMatch(found.get(), weight);
}

std::optional<FontMatch> MatchFallbackFont(std::string_view face, int weight, char32_t codePoint) {
  if (!InitFontconfig()) return std::nullopt;
  Pattern pattern = RequestPattern(face, weight);
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
    if (std::optional<FontMatch> match = ToFontMatch(candidate, weight)) return match;
  }
  return std::nullopt;
}

}  // namespace korvalin::platform
