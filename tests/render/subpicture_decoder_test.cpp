#include "render/subpicture_decoder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "render/subpicture_writer.h"

namespace korvalin {
namespace {

using testing::BuildPack;
using testing::BuildUnit;
using testing::ExpectedPicture;
using testing::PackSpec;
using testing::Row;
using testing::SplitUnit;
using testing::TestLuma;
using testing::UnitSpec;
using testing::VideoPack;

LumaPalette Palette() {
  LumaPalette p;
  p.luma = TestLuma();
  p.read = true;
  return p;
}

struct Decoded {
  int result = 0;
  int32_t duration = 0;
  Picture picture;
};

Decoded Decode(const std::string& file, int64_t offset = 0) {
  StdFile f;
  EXPECT_EQ(f.OpenMemory(file.data(), file.size(), "rb"), 0);
  Decoded d;
  d.duration = -7;
  d.result = ReadSubpicture(d.picture, d.duration, offset, f, Palette());
  return d;
}

// A small picture: 6 x 4 with all four codes, runs cut at the row end, an end of row.
UnitSpec SmallSpec() {
  UnitSpec s;
  s.width = 6;
  s.height = 4;
  s.rows = {
      Row{{2, 1}, {2, 2}, {2, 3}}, Row{{1, 0}, {5, 1}},
      Row{{3, 3}, {0, 0}},  // end of row: the rest transparent
      Row{{9, 2}},          // longer than the row: cut
  };
  return s;
}

void ExpectSamePicture(const Picture& actual, const Picture& expected) {
  ASSERT_EQ(actual.width, expected.width);
  ASSERT_EQ(actual.height, expected.height);
  EXPECT_EQ(actual.pixels, expected.pixels);
}

TEST(ReadSubpicture, DecodesAUnitThatFitsInOnePack) {
  const UnitSpec layout = SmallSpec();
  const Decoded d = Decode(BuildPack(BuildUnit(layout)));
  ASSERT_EQ(d.result, 0);
  EXPECT_EQ(d.duration, 1137);  // delay 100 x 1024 / 90
  ExpectSamePicture(d.picture, ExpectedPicture(layout, TestLuma()));
  // Row 1: code 0 is transparent, code 1 has colour 1 -> luma 31.
  EXPECT_EQ(d.picture.At(0, 1), 0);
  EXPECT_EQ(d.picture.At(1, 1), 31);
  // Row 2 ends early; row 3's long run is cut at the row end.
  EXPECT_EQ(d.picture.At(2, 2), 63);
  EXPECT_EQ(d.picture.At(3, 2), 0);
  EXPECT_EQ(d.picture.At(5, 3), 47);
}

// A unit of more than two packs' payload: 160 x 60 of one-pixel runs of alternating codes.
UnitSpec LargeSpec() {
  UnitSpec s;
  s.width = 160;
  s.height = 60;
  for (int32_t y = 0; y < s.height; ++y) {
    Row row;
    for (int32_t x = 0; x < s.width; ++x) row.push_back({1, 1 + (x + y) % 3});
    s.rows.push_back(row);
  }
  return s;
}

TEST(ReadSubpicture, AssemblesAUnitAcrossThreePacksSkippingForeignPacks) {
  const UnitSpec layout = LargeSpec();
  const std::string unit = BuildUnit(layout);
  const auto packs = SplitUnit(unit, 0x21);
  ASSERT_EQ(packs.size(), 3u);
  PackSpec otherStream;
  otherStream.substream = 0x22;
  otherStream.timeStamp = false;
  otherStream.headerDataLength = 0;
  const std::string other = BuildPack(std::string(100, '\x11'), otherStream);
  // A unit of the same stream starting in between (time stamp set) is skipped too.
  const std::string nextUnit = SplitUnit(BuildUnit(SmallSpec()), 0x21)[0];
  const std::string file = VideoPack() + packs[0] + VideoPack() + other + packs[1] + nextUnit +
                           other + packs[2] + VideoPack();
  const Decoded d = Decode(file, 2048);
  ASSERT_EQ(d.result, 0);
  EXPECT_EQ(d.duration, 1137);
  ExpectSamePicture(d.picture, ExpectedPicture(layout, TestLuma()));
}

TEST(ReadSubpicture, EachContinuationPackHasItsOwnHeaderLength) {
  const UnitSpec layout = LargeSpec();
  const auto packs = SplitUnit(BuildUnit(layout), 0x20, 7);
  ASSERT_EQ(packs.size(), 3u);
  const Decoded d = Decode(packs[0] + packs[1] + packs[2]);
  ASSERT_EQ(d.result, 0);
  ExpectSamePicture(d.picture, ExpectedPicture(layout, TestLuma()));
}

TEST(ReadSubpicture, FailsWhenTheUnitRunsPastTheEndOfTheFile) {
  const auto packs = SplitUnit(BuildUnit(LargeSpec()));
  const Decoded d = Decode(packs[0] + packs[1]);
  EXPECT_EQ(d.result, -1);
  EXPECT_EQ(d.duration, 0);
  EXPECT_FALSE(d.picture.HasPixels());
}

TEST(ReadSubpicture, RefusesAFirstPackThatIsNotATimeStampedSubpicture) {
  const std::string unit = BuildUnit(SmallSpec());
  PackSpec noStamp;
  noStamp.timeStamp = false;
  EXPECT_EQ(Decode(BuildPack(unit, noStamp)).result, -1);
  PackSpec audio;
  audio.substream = 0x80;
  EXPECT_EQ(Decode(BuildPack(unit, audio)).result, -1);
  PackSpec video;
  video.streamId = 0xE0;
  EXPECT_EQ(Decode(BuildPack(unit, video)).result, -1);
  PackSpec scrambled;
  scrambled.scrambled = true;
  EXPECT_EQ(Decode(BuildPack(unit, scrambled)).result, -1);
  std::string noPackStart = BuildPack(unit);
  noPackStart[3] = '\xBB';
  EXPECT_EQ(Decode(noPackStart).result, -1);
  std::string decodingStamp = BuildPack(unit);
  decodingStamp[23] = '\x31';  // PTS and DTS
  EXPECT_EQ(Decode(decodingStamp).result, -1);
  EXPECT_EQ(Decode(BuildPack(unit).substr(0, 2047)).result, -1);  // short pack
}

TEST(ReadSubpicture, FailsOnAScrambledContinuationPack) {
  const auto packs = SplitUnit(BuildUnit(LargeSpec()));
  std::string second = packs[1];
  second[20] = static_cast<char>(second[20] | 0x20);
  EXPECT_EQ(Decode(packs[0] + second + packs[2]).result, -1);
}

TEST(ReadSubpicture, RefusesOffsetsFrom2GiBOnAndNegativeOnes) {
  const std::string file = BuildPack(BuildUnit(SmallSpec()));
  EXPECT_EQ(Decode(file, int64_t{1} << 31).result, -1);
  EXPECT_EQ(Decode(file, (int64_t{1} << 31) + 4096).result, -1);
  EXPECT_EQ(Decode(file, -2048).result, -1);
  EXPECT_EQ(Decode(file, 2048).result, -1);  // past the end: short read
}

TEST(ReadSubpicture, DurationIsZeroWithoutASecondControlSequence) {
  UnitSpec layout = SmallSpec();
  layout.secondSequence = false;
  const Decoded d = Decode(BuildPack(BuildUnit(layout)));
  ASSERT_EQ(d.result, 0);
  EXPECT_EQ(d.duration, 0);
  ExpectSamePicture(d.picture, ExpectedPicture(layout, TestLuma()));
}

TEST(ReadSubpicture, DurationFollowsTheDelayUnit) {
  for (const auto& [delay, ms] : {std::pair{1, 11}, {90, 1024}, {100, 1137}, {65535, 745642}}) {
    UnitSpec layout = SmallSpec();
    layout.delay = delay;
    EXPECT_EQ(Decode(BuildPack(BuildUnit(layout))).duration, ms) << delay;
  }
}

TEST(ReadSubpicture, OnlyCodesWithContrastAbove3AreOpaque) {
  UnitSpec layout = SmallSpec();
  layout.contrast = {0, 15, 0, 0};
  layout.colour = {9, 12, 3, 4};
  const Decoded d = Decode(BuildPack(BuildUnit(layout)));
  ASSERT_EQ(d.result, 0);
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 6; ++x) {
      const uint8_t v = d.picture.At(x, y);
      EXPECT_TRUE(v == 0 || v == TestLuma()[12]) << x << "," << y;
    }
  }
  EXPECT_EQ(d.picture.At(0, 0), TestLuma()[12]);  // code 1
  EXPECT_EQ(d.picture.At(2, 0), 0);               // code 2, contrast 0
  // Contrast 3 is still transparent, 4 already opaque.
  layout.contrast = {0, 3, 4, 0};
  const Decoded e = Decode(BuildPack(BuildUnit(layout)));
  EXPECT_EQ(e.picture.At(0, 0), 0);
  EXPECT_EQ(e.picture.At(2, 0), TestLuma()[3]);
}

TEST(ReadSubpicture, UsesTheLongCodeForms) {
  UnitSpec layout;
  layout.width = 300;
  layout.height = 2;
  layout.rows = {Row{{3, 1}, {15, 2}, {63, 3}, {200, 1}, {19, 2}}, Row{{255, 3}, {45, 1}}};
  const Decoded d = Decode(BuildPack(BuildUnit(layout)));
  ASSERT_EQ(d.result, 0);
  ExpectSamePicture(d.picture, ExpectedPicture(layout, TestLuma()));
}

TEST(ReadSubpicture, FailsOnAnUnknownCommand) {
  UnitSpec layout = SmallSpec();
  layout.extraCommands = "\x07";
  EXPECT_EQ(Decode(BuildPack(BuildUnit(layout))).result, -1);
  layout.extraCommands = "\x00";  // forced display: nothing
  layout.extraCommands.resize(1);
  EXPECT_EQ(Decode(BuildPack(BuildUnit(layout))).result, 0);
}

TEST(ReadSubpicture, LaterCommandsOverwriteEarlierOnes) {
  UnitSpec layout = SmallSpec();
  layout.extraCommands = std::string("\x04\x00\x00", 3);  // all transparent after all
  const Decoded d = Decode(BuildPack(BuildUnit(layout)));
  ASSERT_EQ(d.result, 0);
  EXPECT_EQ(d.picture.width, 6);
  for (uint8_t v : d.picture.pixels) EXPECT_EQ(v, 0);
}

// Damaged units, hand-made: header, pixel bytes, the first control sequence's delay and
// next offset, its commands. controlOffset and size default to what fits.
std::string RawUnit(const std::string& pixels, const std::string& commands,
                    int32_t controlOffset = -1, int32_t size = -1) {
  std::string unit;
  const auto ctrl = static_cast<uint32_t>(
      controlOffset >= 0 ? controlOffset : static_cast<int32_t>(4 + pixels.size()));
  const auto total = static_cast<uint32_t>(
      size >= 0 ? size : static_cast<int32_t>(8 + pixels.size() + commands.size()));
  testing::PutU16(unit, total);
  testing::PutU16(unit, ctrl);
  return unit + pixels + std::string(4, '\0') + commands;
}

const std::string kArea4x2("\x05\x00\x00\x03\x00\x00\x01", 7);  // 4 x 2 at (0, 0)
const std::string kVisible("\x03\x32\x10\x04\xFF\xF0", 6);      // codes 1..3 opaque
std::string Fields(uint16_t top, uint16_t bottom) {
  std::string s("\x06");
  testing::PutU16(s, top);
  testing::PutU16(s, bottom);
  return s;
}

TEST(ReadSubpicture, DamagedUnitsStayInsideTheirBuffers) {
  const std::string pixels("\x11\x11\x11\x11", 4);  // each byte: a run of 4, code 1
  struct Case {
    const char* what;
    std::string unit;
    int result;
    int32_t width;
  } cases[] = {
      {"operands past the end", RawUnit(pixels, kVisible + kArea4x2 + "\x06"), 0, 4},
      {"area operands cut", RawUnit(pixels, std::string("\x05\x00\x00", 3)), 0, 0},
      {"colour operands cut", RawUnit(pixels, kArea4x2 + "\x03\x32"), 0, 4},
      {"control offset beyond the end", RawUnit(pixels, kArea4x2, 4000), 0, 0},
      {"control offset on pixel data", RawUnit(pixels, kArea4x2, 0), -1, 0},
      {"size below 4", RawUnit("", "", -1, 3), -1, 0},
      {"size 4", RawUnit("", "", -1, 4), 0, 0},
      {"size shorter than the commands", RawUnit(pixels, kVisible + kArea4x2, -1, 12), 0, 0},
      {"area ends before it starts",
       RawUnit(pixels, std::string("\x05\x00\x50\x01\x00\x00\x01", 7)), 0, 0},
      {"field offsets below the unit", RawUnit(pixels, kVisible + kArea4x2 + Fields(0, 1)), 0, 4},
      {"field offsets beyond the unit",
       RawUnit(pixels, kVisible + kArea4x2 + Fields(0xFFF0, 0xFFFF)), 0, 4},
      {"0xFF at the very end", RawUnit(pixels, kArea4x2 + Fields(4, 6) + "\xFF"), 0, 4},
      {"0xFF with a cut sequence after it", RawUnit(pixels, kArea4x2 + Fields(4, 6) + "\xFF\x00"),
       0, 4},
  };
  for (const Case& c : cases) {
    const Decoded d = Decode(BuildPack(c.unit));
    EXPECT_EQ(d.result, c.result) << c.what;
    EXPECT_EQ(d.picture.width, c.width) << c.what;
    EXPECT_EQ(d.duration, 0) << c.what;
    EXPECT_EQ(d.picture.pixels.size(), static_cast<std::size_t>(d.picture.width) *
                                           static_cast<std::size_t>(d.picture.height))
        << c.what;
  }
}

TEST(ReadSubpicture, DecodesHandMadeFields) {
  const std::string pixels("\x11\x11\x11\x11", 4);
  const Decoded d = Decode(BuildPack(RawUnit(pixels, kVisible + kArea4x2 + Fields(4, 6) + "\x02")));
  ASSERT_EQ(d.result, 0);
  ASSERT_EQ(d.picture.width, 4);
  for (uint8_t v : d.picture.pixels) EXPECT_EQ(v, TestLuma()[1]);
}

TEST(ReadSubpicture, DecodingStopsWhenAFieldReachesTheControlOffset) {
  // The bottom field starts at the control offset (buffer position 8 here): nothing is
  // decoded, not even the top field's first row.
  const std::string pixels("\x11\x11\x11\x11", 4);
  const Decoded d =
      Decode(BuildPack(RawUnit(pixels, kVisible + kArea4x2 + Fields(4, 12) + "\x02")));
  ASSERT_EQ(d.result, 0);
  ASSERT_EQ(d.picture.width, 4);
  for (uint8_t v : d.picture.pixels) EXPECT_EQ(v, 0);
}

TEST(DecodeSubpictureUnit, CodeSpanningTheEndOfTheUnitStops) {
  Picture picture;
  int32_t duration = 0;
  const uint8_t unit[] = {0x01};  // a code cut after its first nibble pair
  EXPECT_EQ(DecodeSubpictureUnit(unit, sizeof unit, 4000, Palette(), picture, duration), 0);
  EXPECT_FALSE(picture.HasPixels());
}

std::string ReadCorpusFile(const std::string& name) {
  const std::filesystem::path path = std::filesystem::path(KORVALIN_CORPUS) / "vobsub" / name;
  std::ifstream in(path, std::ios::binary);
  if (!in) return {};
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

TEST(ReadSubpictureCorpus, DecodesRealUnits) {
  const std::string tiny = ReadCorpusFile("subtitles-rs_tiny.sub");
  const std::string example = ReadCorpusFile("subtitles-rs_example.sub");
  if (tiny.empty() || example.empty()) GTEST_SKIP() << "corpus not present";
  const Decoded t = Decode(tiny, 0);
  ASSERT_EQ(t.result, 0);
  EXPECT_GT(t.picture.width, 0);
  EXPECT_GT(t.duration, 0);
  std::size_t opaque = 0;
  for (uint8_t v : t.picture.pixels) opaque += v != 0;
  EXPECT_GT(opaque, 0u);
  for (int64_t offset : {0, 0x1000}) {
    const Decoded e = Decode(example, offset);
    EXPECT_EQ(e.result, 0) << offset;
    EXPECT_GT(e.picture.width, 0) << offset;
  }
}

TEST(ReadSubpictureCorpus, OddPacksEndSafely) {
  for (const char* name :
       {"subtitles-rs_tiny-split.sub", "subtitleedit_sample_VodSub_stuffingBytes.sub",
        "subtitleedit_sample_VodSub_nonStandardLength.sub",
        "subtitleedit_sample_VodSub_windowStuffingWithoutPaddingStream.sub"}) {
    const std::string bytes = ReadCorpusFile(name);
    if (bytes.empty()) GTEST_SKIP() << "corpus not present";
    for (int64_t offset = 0; offset < static_cast<int64_t>(bytes.size()); offset += 2048) {
      const Decoded d = Decode(bytes, offset);
      EXPECT_TRUE(d.result == 0 || d.result == -1) << name;
      EXPECT_EQ(d.picture.pixels.size(), static_cast<std::size_t>(d.picture.width) *
                                             static_cast<std::size_t>(d.picture.height));
    }
  }
}

}  // namespace
}  // namespace korvalin
