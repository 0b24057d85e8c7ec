#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "render/picture.h"
#include "render/text_renderer.h"

namespace korvalin {
namespace {

// FNV-1a over the image's size, its pixels and its three converted forms.
class ImageHash {
 public:
  void Add(const void* data, size_t size) {
    for (size_t i = 0; i < size; ++i) {
      hash_ = (hash_ ^ static_cast<const uint8_t*>(data)[i]) * 0x100000001B3ull;
    }
  }
  void AddImage(TextRenderer& r) {
    const int32_t size[2] = {r.imageWidth(), r.imageHeight()};
    Add(size, sizeof size);
    for (int32_t y = 0; y < r.imageHeight(); ++y) Add(r.ImageRow(y), r.imageWidth() * 4u);
    for (PixelMode mode : {PixelMode::YUY2, PixelMode::RGB32, PixelMode::RGB565}) {
      r.ConvertTo(mode);
      const size_t bytes = r.imageWidth() * (mode == PixelMode::RGB32 ? 4u : 2u);
      for (int32_t y = 0; y < r.imageHeight(); ++y) Add(r.ConvertedRow(y), bytes);
    }
  }
  uint64_t value() const { return hash_; }

 private:
  uint64_t hash_ = 0xCBF29CE484222325ull;
};

const char* const kTexts[] = {
    "Hello",
    "",
    "A much longer line of subtitle text that wraps at narrow widths, doesn't it?",
    "Two lines\nthe second with <i>tags</i> & ampersands",
    "\xC3\x9Cn\xC3\xAF"
    "c\xC3\xB6"
    "d\xC3\xA9 UTF-8 \xE2\x80\x94 \xD0\x9F\xD1\x80\xD0\xB8",
    "averyveryverylongwordwithoutanyspacesatalltobreakitanywhereatall and more",
};

struct Style {
  const char* face;
  int32_t size, weight, alignment;
  uint32_t colour;
  int32_t transparent;
};

uint64_t HashTexts(int32_t surfaceWidth, int32_t surfaceHeight, const Style& s,
                   std::initializer_list<int32_t> widths) {
  TextRenderer r(surfaceWidth, surfaceHeight);
  r.SetStyle(s.face, 0, s.size, s.weight, s.alignment, s.colour, s.transparent);
  ImageHash hash;
  for (int32_t width : widths) {
    for (const char* text : kTexts) {
      r.ClearImage();
      const int result = r.RenderText(text, width);
      hash.Add(&result, sizeof result);
      hash.AddImage(r);
    }
  }
  return hash.value();
}

// Hashes of the images as drawn before surfaces grew with the picture and before SubRip tags
// became styles (with the fonts and FreeType the set-up installs): up to the surface's own
// width every image stays byte for byte what it was.
TEST(TextImageIdentity, ImagesUpToTheSurfaceWidthAreUnchanged) {
  const struct {
    Style style;
    uint64_t subtitle;
    uint64_t clock;
  } cases[] = {
      {{"Arial", 30, 500, 1, 0xFFFFFF, 1}, 0xdde2fddf6b30bd07ull, 0x32f69dd328135b99ull},
      {{"Arial", 36, 700, 0, 0x00FFFF, 0}, 0x86bcee5bdcd798eeull, 0xa1b99e896727ffeaull},
      {{"Arial", 24, 900, 2, 0x000000, 1}, 0x93edc11a832cd5d9ull, 0x476115459b6944baull},
      {{"Liberation Serif", 40, 400, 1, 0x3080FF, 1}, 0xc378825d8e26b415ull, 0xa9649f4628dd1badull},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(HashTexts(720, 576, c.style, {3, 100, 320, 352, 500, 640, 704, 720}), c.subtitle)
        << c.style.size;
    EXPECT_EQ(HashTexts(360, 288, c.style, {3, 100, 200, 352, 360}), c.clock) << c.style.size;
  }

  TextRenderer r(720, 576);
  r.SetStyle("Arial", 0, 30, 500, 1, 0x40C0FF, 0);
  ImageHash hash;
  for (const auto& [w, h] : {std::pair{721, 3}, {719, 2}, {5, 600}, {1, 1}}) {
    Picture p(w, h);
    for (size_t i = 0; i < p.pixels.size(); ++i) p.pixels[i] = static_cast<uint8_t>(i * 7);
    for (int32_t width : {100, 720}) {
      r.ClearImage();
      r.RenderPicture(p, width);
      hash.AddImage(r);
    }
  }
  EXPECT_EQ(hash.value(), 0x76ac9e437185fdb5ull);
}

TEST(TextImageIdentity, SubRipTextWithoutTagsDrawsAsPlainText) {
  TextRenderer plain(720, 576), subRip(720, 576);
  for (int32_t width : {320, 720, 1920}) {
    for (const char* text : kTexts) {
      if (std::string(text).find('<') != std::string::npos) continue;
      ImageHash a, b;
      ASSERT_EQ(plain.RenderText(text, width), 0);
      ASSERT_EQ(subRip.RenderText(text, width, TextMarkup::SubRip), 0);
      a.AddImage(plain);
      b.AddImage(subRip);
      EXPECT_EQ(a.value(), b.value()) << text << " at " << width;
    }
  }
}

}  // namespace
}  // namespace korvalin
