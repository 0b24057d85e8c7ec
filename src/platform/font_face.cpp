#include "platform/font_face.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_BITMAP_H
#include FT_SYNTHESIS_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cmath>

namespace korvalin::platform {

struct FontFace::FreeType {
  FT_Library library = nullptr;
  FT_Face face = nullptr;
  ~FreeType() {
    if (face != nullptr) FT_Done_Face(face);
    if (library != nullptr) FT_Done_FreeType(library);
  }
};

namespace {

struct DesignMetrics {
  double ascent;
  double descent;
};

// The cell in font units: the OS/2 Windows ascent and descent when the font has them, as
// Windows sizes a font by its cell; else the horizontal header's.
DesignMetrics CellMetrics(FT_Face face) {
  const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
  if (os2 != nullptr && os2->version != 0xFFFF && os2->usWinAscent + os2->usWinDescent > 0) {
    return {double(os2->usWinAscent), double(os2->usWinDescent)};
  }
  if (face->ascender - face->descender > 0) {
    return {double(face->ascender), -double(face->descender)};
  }
  return {double(face->units_per_EM), 0.0};
}

// The slant of a synthetic oblique, as fontconfig's own synthesis uses: x += 0.2 y.
constexpr FT_Fixed kObliqueShear = 0x3333;

// A stroke of `thickness` font units whose first row lies `top` units below the baseline,
// in pixels, kept inside the cell's descent when it fits there.
LineMark ScaledMark(double top, double thickness, double pixelsPerUnit, int32_t descent) {
  LineMark mark;
  mark.thickness =
      std::max<int32_t>(1, static_cast<int32_t>(std::lround(thickness * pixelsPerUnit)));
  mark.offset = static_cast<int32_t>(std::lround(top * pixelsPerUnit));
  if (mark.thickness <= descent) mark.offset = std::min(mark.offset, descent - mark.thickness);
  return mark;
}

// The face's underline thickness in font units, or a fourteenth of the em without one.
double UnderlineThickness(FT_Face face) {
  return face->underline_thickness > 0 ? face->underline_thickness : face->units_per_EM / 14.0;
}

// Underline from the face's own position (the centre of the stroke) and thickness.
LineMark UnderlineOf(FT_Face face, double pixelsPerUnit, int32_t descent) {
  const double thickness = UnderlineThickness(face);
  const double centre =
      face->underline_position != 0 ? -face->underline_position : face->units_per_EM / 10.0;
  return ScaledMark(centre - thickness / 2, thickness, pixelsPerUnit, descent);
}

// Strike-through from the OS/2 table (the top of the stroke above the baseline); without
// one, the underline's thickness at a quarter of the em above the baseline.
LineMark StrikeOutOf(FT_Face face, double pixelsPerUnit, int32_t descent) {
  const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
  if (os2 != nullptr && os2->version != 0xFFFF && os2->yStrikeoutSize > 0) {
    return ScaledMark(-double(os2->yStrikeoutPosition), os2->yStrikeoutSize, pixelsPerUnit,
                      descent);
  }
  const double thickness = UnderlineThickness(face);
  return ScaledMark(-face->units_per_EM / 4.0, thickness, pixelsPerUnit, descent);
}

// Copies a rendered slot's bitmap as 8-bit coverage whatever its pixel mode.
void CopyCoverage(FT_Library library, const FT_Bitmap& source, GlyphImage& glyph) {
  FT_Bitmap gray;
  FT_Bitmap_Init(&gray);
  const FT_Bitmap* bitmap = &source;
  int levels = 256;
  if (source.pixel_mode != FT_PIXEL_MODE_GRAY) {
    if (FT_Bitmap_Convert(library, &source, &gray, 1) != 0) return;
    bitmap = &gray;
    levels = std::max<int>(gray.num_grays, 2);
  }
  glyph.width = static_cast<int32_t>(bitmap->width);
  glyph.height = static_cast<int32_t>(bitmap->rows);
  glyph.coverage.resize(static_cast<size_t>(glyph.width) * glyph.height);
  for (int32_t y = 0; y < glyph.height; ++y) {
    const unsigned char* row = bitmap->buffer + static_cast<ptrdiff_t>(y) * bitmap->pitch;
    for (int32_t x = 0; x < glyph.width; ++x) {
      glyph.coverage[static_cast<size_t>(y) * glyph.width + x] =
          static_cast<uint8_t>(row[x] * 255 / (levels - 1));
    }
  }
  FT_Bitmap_Done(library, &gray);
}

}  // namespace

FontFace::FontFace(std::unique_ptr<FreeType> freeType) : freeType_(std::move(freeType)) {}
FontFace::~FontFace() = default;

std::unique_ptr<FontFace> FontFace::Open(const FontMatch& match, int32_t cellHeight) {
  auto freeType = std::make_unique<FreeType>();
  if (FT_Init_FreeType(&freeType->library) != 0) return nullptr;
  if (FT_New_Face(freeType->library, match.file.c_str(), match.index, &freeType->face) != 0) {
    return nullptr;
  }
  FT_Face face = freeType->face;
  if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0) return nullptr;
  FT_Select_Charmap(face, FT_ENCODING_UNICODE);

  const int32_t cell = std::clamp(cellHeight, 1, kMaxCellHeight);
  const DesignMetrics metrics = CellMetrics(face);
  const double pixelsPerUnit = cell / (metrics.ascent + metrics.descent);
  const auto ppem26_6 =
      static_cast<FT_F26Dot6>(std::lround(pixelsPerUnit * face->units_per_EM * 64));
  if (FT_Set_Char_Size(face, 0, std::max<FT_F26Dot6>(ppem26_6, 1), 72, 72) != 0) return nullptr;

  if (match.oblique) {
    FT_Matrix shear{0x10000, kObliqueShear, 0, 0x10000};
    FT_Set_Transform(face, &shear, nullptr);
  }

  std::unique_ptr<FontFace> result(new FontFace(std::move(freeType)));
  result->embolden_ = match.embolden;
  result->ascent_ = std::clamp<int32_t>(std::lround(metrics.ascent * pixelsPerUnit), 0, cell);
  result->descent_ = cell - result->ascent_;
  result->underline_ = UnderlineOf(face, pixelsPerUnit, result->descent_);
  result->strikeOut_ = StrikeOutOf(face, pixelsPerUnit, result->descent_);
  return result;
}

uint32_t FontFace::GlyphIndex(char32_t codePoint) const {
  return FT_Get_Char_Index(freeType_->face, codePoint);
}

GlyphImage FontFace::Render(uint32_t glyphIndex) const {
  GlyphImage glyph;
  FT_Face face = freeType_->face;
  if (FT_Load_Glyph(face, glyphIndex, FT_LOAD_DEFAULT | FT_LOAD_NO_BITMAP) != 0) return glyph;
  if (embolden_) FT_GlyphSlot_Embolden(face->glyph);
  if (FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL) != 0) return glyph;
  const FT_GlyphSlot slot = face->glyph;
  glyph.advance = static_cast<int32_t>((slot->advance.x + 32) >> 6);
  glyph.left = slot->bitmap_left;
  glyph.top = slot->bitmap_top;
  CopyCoverage(freeType_->library, slot->bitmap, glyph);
  return glyph;
}

}  // namespace korvalin::platform
