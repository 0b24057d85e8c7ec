#include "render/subpicture_decoder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "render/subpicture_writer.h"

namespace korvalin {
namespace {

using testing::BuildPack;
using testing::BuildUnit;
using testing::PackLayout;
using testing::Row;
using testing::SplitUnit;
using testing::TestLuma;
using testing::UnitSpec;

struct Decoded {
  int result = 0;
  int32_t duration = -7;
  Picture picture;
};

Decoded Decode(const std::string& file, int64_t offset = 0,
               SubpictureArea area = SubpictureArea::kWhole) {
  StdFile f;
  EXPECT_EQ(f.OpenMemory(file.data(), file.size(), "rb"), 0);
  LumaPalette palette;
  palette.luma = TestLuma();
  palette.read = true;
  Decoded d;
  d.result = ReadSubpicture(d.picture, d.duration, offset, f, palette, area);
  EXPECT_EQ(d.picture.pixels.size(),
            static_cast<std::size_t>(d.picture.width) * static_cast<std::size_t>(d.picture.height));
  return d;
}

// 6 x 5: all four codes, an end of row, a run past the row end, the long code forms.
UnitSpec SmallUnit() {
  UnitSpec s;
  s.width = 6;
  s.height = 5;
  s.rows = {Row{{2, 1}, {2, 2}, {2, 3}}, Row{{1, 0}, {5, 1}}, Row{{3, 3}, {0, 0}}, Row{{9, 2}},
            Row{{3, 1}, {15, 2}, {63, 3}, {200, 1}}};
  return s;
}

UnitSpec LargeUnit() {  // more than two packs' payload
  UnitSpec s;
  s.width = 160;
  s.height = 60;
  s.rows.resize(60);
  for (int32_t y = 0; y < 60; ++y)
    for (int32_t x = 0; x < 160; ++x) s.rows[y].push_back({1, 1 + (x + y) % 3});
  return s;
}

void ExpectPicture(const Decoded& d, const UnitSpec& layout, int32_t duration = 1137) {
  ASSERT_EQ(d.result, 0);
  EXPECT_EQ(d.duration, duration);  // delay x 1024 / 90
  const Picture expected = testing::ExpectedPicture(layout, TestLuma());
  EXPECT_EQ(std::tie(d.picture.width, d.picture.height, d.picture.pixels),
            std::tie(expected.width, expected.height, expected.pixels));
}

TEST(ReadSubpicture, DecodesAUnitInOnePack) {
  const UnitSpec layout = SmallUnit();
  const Decoded d = Decode(BuildPack(BuildUnit(layout)));
  ExpectPicture(d, layout);
  EXPECT_EQ(d.picture.At(0, 1), 0);   // code 0
  EXPECT_EQ(d.picture.At(1, 1), 31);  // colour 1
  EXPECT_EQ(d.picture.At(3, 2), 0);   // after the end of row
  EXPECT_EQ(d.picture.At(5, 3), 47);  // the run cut at the row end
  UnitSpec once = layout;
  once.secondSequence = false;
  ExpectPicture(Decode(BuildPack(BuildUnit(once))), once, 0);
  once.extraCommands = "\x07";  // unknown command
  EXPECT_EQ(Decode(BuildPack(BuildUnit(once))).result, -1);
}

TEST(ReadSubpicture, AssemblesThreePacksSkippingForeignOnes) {
  const UnitSpec layout = LargeUnit();
  const auto packs = SplitUnit(BuildUnit(layout), 0x21);
  ASSERT_EQ(packs.size(), 3u);
  const std::string other = BuildPack(std::string(100, '\x11'), {0xBD, 0x22, false, false, 0});
  const std::string nextUnit = SplitUnit(BuildUnit(SmallUnit()), 0x21)[0];
  const std::string video = testing::VideoPack();
  ExpectPicture(
      Decode(video + packs[0] + video + other + packs[1] + nextUnit + other + packs[2], 2048),
      layout);
  const auto longer = SplitUnit(BuildUnit(layout), 0x20, 7);  // own header length per pack
  ExpectPicture(Decode(longer[0] + longer[1] + longer[2]), layout);
  const Decoded cut = Decode(longer[0] + longer[1]);
  EXPECT_EQ(cut.result, -1);
  EXPECT_EQ(cut.duration, 0);
  EXPECT_FALSE(cut.picture.HasPixels());
}

TEST(ReadSubpicture, RefusesAFirstPackThatIsNotATimeStampedSubpicture) {
  const std::string unit = BuildUnit(SmallUnit());
  for (const PackLayout& s :
       {PackLayout{0xBD, 0x20, false, false, 5}, PackLayout{0xBD, 0x80, true, false, 5},
        PackLayout{0xE0, 0x20, true, false, 5}, PackLayout{0xBD, 0x20, true, true, 5}})
    EXPECT_EQ(Decode(BuildPack(unit, s)).result, -1) << int{s.streamId} << " " << int{s.substream};
  const std::string file = BuildPack(unit);
  EXPECT_EQ(Decode(file, int64_t{1} << 31).result, -1);
  EXPECT_EQ(Decode(file, -2048).result, -1);
  EXPECT_EQ(Decode(file.substr(0, 2047)).result, -1);
}

TEST(ReadSubpicture, OnlyCodesWithContrastAbove3AreOpaque) {
  UnitSpec layout = SmallUnit();
  layout.colour = {9, 12, 3, 4};
  layout.contrast = {0, 3, 4, 0};
  const Decoded d = Decode(BuildPack(BuildUnit(layout)));
  ExpectPicture(d, layout);
  EXPECT_EQ(d.picture.At(0, 0), 0);                       // code 1, contrast 3
  EXPECT_EQ(d.picture.At(2, 0), TestLuma()[3]);           // code 2, contrast 4
  layout.extraCommands = std::string("\x04\x00\x00", 3);  // a later contrast wins
  for (uint8_t v : Decode(BuildPack(BuildUnit(layout))).picture.pixels) EXPECT_EQ(v, 0);
}

// A hand-made unit: header, pixels, the first sequence's delay and next offset, commands.
std::string RawUnit(const std::string& commands, int32_t control = 8, int32_t size = -1) {
  std::string unit;
  testing::PutU16(unit, static_cast<uint32_t>(size >= 0 ? size : 12 + commands.size()));
  testing::PutU16(unit, static_cast<uint32_t>(control));
  return unit + std::string("\x11\x11\x11\x11\0\0\0\0", 8) + commands;  // runs of 4, code 1
}

TEST(ReadSubpicture, DamagedUnitsEndSafely) {
  const std::string area("\x05\x00\x00\x03\x00\x00\x01", 7);  // 4 x 2 at (0, 0)
  const std::string visible("\x03\x32\x10\x04\xFF\xF0", 6);
  const auto fields = [](int top, int bottom) {
    return std::string{'\x06', '\0', static_cast<char>(top), '\0', static_cast<char>(bottom)};
  };
  const struct {
    std::string unit;
    int result;
    int32_t width;
    int pixel;  // of the last row, -1 unchecked
  } cases[] = {
      {RawUnit(visible + area + fields(4, 6) + "\x02"), 0, 4, TestLuma()[1]},
      {RawUnit(visible + area + fields(4, 12) + "\x02"), 0, 4, 0},  // a field at the control
      {RawUnit(visible + area + "\x06"), 0, 4, -1},                 // operands past the end
      {RawUnit(area, 4000), 0, 0, -1},                              // control offset beyond the end
      {RawUnit(area, 0), -1, 0, -1},                                // control offset on pixel data
      {RawUnit("", 8, 3), -1, 0, -1},
      {RawUnit(visible + area, 8, 12), 0, 0, -1},  // size shorter than the commands
      {RawUnit(std::string("\x05\x00\x50\x01\x00\x00\x01", 7)), 0, 0, -1},  // ends before start
      {RawUnit(visible + area + "\x06\xFF\xF0\xFF\xFF"), 0, 4, -1},
      {RawUnit(area + fields(4, 6) + std::string("\xFF\x00", 2)), 0, 4, -1},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const Decoded d = Decode(BuildPack(cases[i].unit));
    EXPECT_EQ(d.result, cases[i].result) << i;
    EXPECT_EQ(d.picture.width, cases[i].width) << i;
    EXPECT_EQ(d.duration, 0) << i;
    if (cases[i].pixel >= 0) {
      EXPECT_EQ(d.picture.pixels.at(7), cases[i].pixel) << i;
    }
  }
}

// Decoding only the visible rectangle gives what decoding the whole area and cropping gives,
// damaged units included, without making the whole area.
TEST(ReadSubpicture, VisibleAreaIsTheWholeAreaCropped) {
  std::vector<std::string> units = {BuildUnit(SmallUnit()), BuildUnit(LargeUnit())};
  UnitSpec sparse;  // a 4096 x 4096 area holding two small runs far apart
  sparse.x1 = 0, sparse.y1 = 0, sparse.width = 4096, sparse.height = 4096;
  sparse.rows = {Row{{0, 0}}, Row{{255, 0}, {255, 0}, {3, 1}, {0, 0}}, Row{{0, 0}}, Row{{2, 2}}};
  units.push_back(BuildUnit(sparse));
  UnitSpec background = SmallUnit();
  background.contrast = {15, 0, 0, 0};  // only code 0 opaque: the rest of each row shows
  units.push_back(BuildUnit(background));
  background.contrast = {0, 0, 0, 0};  // nothing visible: an empty picture
  units.push_back(BuildUnit(background));
  std::mt19937 random(11);
  for (int i = 0; i < 300; ++i) {  // damaged: random bytes after a valid start
    std::string unit = units[static_cast<std::size_t>(i) % 2];
    for (std::size_t k = 4; k < unit.size(); ++k)
      if (random() % 8 == 0) unit[k] = static_cast<char>(random());
    units.push_back(unit);
  }
  for (std::size_t i = 0; i < units.size(); ++i) {
    const std::string file = BuildPack(units[i].substr(0, testing::PackRoom({})));
    Decoded whole = Decode(file);
    whole.picture.CropToContent();
    const Decoded visible = Decode(file, 0, SubpictureArea::kVisible);
    EXPECT_EQ(std::tie(visible.result, visible.duration), std::tie(whole.result, whole.duration))
        << i;
    EXPECT_EQ(std::tie(visible.picture.width, visible.picture.height, visible.picture.pixels),
              std::tie(whole.picture.width, whole.picture.height, whole.picture.pixels))
        << i;
  }
  const Decoded far = Decode(BuildPack(units[2]), 0, SubpictureArea::kVisible);
  EXPECT_EQ(far.picture.width, 513);
  EXPECT_LE(far.picture.height, 4);
}

}  // namespace
}  // namespace korvalin
