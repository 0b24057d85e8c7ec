#include "filter/y4m_stream.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace korvalin {
namespace {

// A reader over the bytes in an unnamed temporary file.
struct Reader {
  explicit Reader(const std::string& bytes) : file(std::tmpfile()), reader(file) {
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
  }
  ~Reader() { std::fclose(file); }
  std::FILE* file;
  Y4mReader reader;
};

TEST(Y4mStreamTest, Planar422RoundTripIsLossless) {
  std::string frames;
  for (int f = 0; f < 2; ++f) {
    frames += "FRAME\n";
    for (int i = 0; i < 48; ++i) frames += static_cast<char>(1 + 8 * f + i * 7);
  }
  Reader in("YUV4MPEG2 W6 H4 F25:1 C422\n" + frames);
  ASSERT_EQ(in.reader.ReadHeader(), "");
  std::vector<uint8_t> first, second, unused;
  ASSERT_EQ(in.reader.ReadFrame(&first), 1);
  ASSERT_EQ(in.reader.ReadFrame(&second), 1);
  EXPECT_EQ(in.reader.ReadFrame(&unused), 0);
  EXPECT_EQ(first[1], static_cast<uint8_t>(1 + 24 * 7));  // U0 follows the 24 luma bytes

  char* written = nullptr;
  std::size_t writtenSize = 0;
  std::FILE* out = open_memstream(&written, &writtenSize);
  Y4mWriter writer(out);
  ASSERT_TRUE(writer.WriteHeader(6, 4, 25, 1));
  ASSERT_TRUE(writer.WriteFrame(first));
  ASSERT_TRUE(writer.WriteFrame(second));
  std::fclose(out);
  const std::string output(written, writtenSize);
  free(written);
  EXPECT_EQ(output.substr(output.find("FRAME")), frames);
}

TEST(Y4mStreamTest, Chroma420RowsAreRepeated) {
  // 4 x 2: luma 8 bytes, then one row of 2 U and one of 2 V.
  Reader in("YUV4MPEG2 W4 H2 C420mpeg2\nFRAME\n\x10\x11\x12\x13\x20\x21\x22\x23\x50\x51\x60\x61");
  ASSERT_EQ(in.reader.ReadHeader(), "");
  std::vector<uint8_t> frame;
  ASSERT_EQ(in.reader.ReadFrame(&frame), 1);
  const std::vector<uint8_t> expected = {0x10, 0x50, 0x11, 0x60, 0x12, 0x51, 0x13, 0x61,
                                         0x20, 0x50, 0x21, 0x60, 0x22, 0x51, 0x23, 0x61};
  EXPECT_EQ(frame, expected);
}

TEST(Y4mStreamTest, DamagedHeadersAndFramesGiveErrors) {
  const std::string header = "YUV4MPEG2 W4 H2 C422\n";
  const char* kTooLarge = "picture too large (at most 16384 pixels a side and 35389440 in all)";
  const struct {
    std::string bytes;
    const char* headerError;
    int frameResult = 0;
    const char* frameError = "";
  } cases[] = {
      {header + "FRAME\n" + std::string(16, 'x'), "", 1, ""},
      {header + "FRAME Ixyz\n" + std::string(16, 'x'), "", 1, ""},
      {header, "", 0, ""},
      {header + "FRAME\n" + std::string(15, 'x'), "", -1, "truncated frame"},
      {header + "FRAMES\n" + std::string(16, 'x'), "", -1, "damaged frame header"},
      {header + "FRAME", "", -1, "damaged frame header"},
      {header + std::string(5000, 'F'), "", -1, "damaged frame header"},
      {"", "empty input"},
      {"YUV4MPEG2 W4 H2", "damaged YUV4MPEG2 header"},
      {"RIFF....\n", "not a YUV4MPEG2 stream"},
      {"YUV4MPEG2 W4 H2 " + std::string(5000, 'X') + "\n", "damaged YUV4MPEG2 header"},
      {"YUV4MPEG2 W-4 H2\n", "missing or bad picture size"},
      {"YUV4MPEG2 W99999999999 H2\n", "bad width"},
      {"YUV4MPEG2 W20000 H2\n", kTooLarge},
      {"YUV4MPEG2 W16384 H16384\n", kTooLarge},
      {"YUV4MPEG2 W8194 H4320\n", kTooLarge},
      {"YUV4MPEG2 W16384 H2 F1000:1\n", ""},
      {"YUV4MPEG2 W8 H2 F1:100\n", ""},
      {"YUV4MPEG2 W8 H2 F1:1000000\n",
       "frame rate F1:1000000 out of range (1/100 to 1000 frames a second)"},
      {"YUV4MPEG2 W8 H2 F2147483647:1\n",
       "frame rate F2147483647:1 out of range (1/100 to 1000 frames a second)"},
      {"YUV4MPEG2 W8 H2 F1:2147483647\n",
       "frame rate F1:2147483647 out of range (1/100 to 1000 frames a second)"},
      {"YUV4MPEG2 W8 H2 F1001:1\n",
       "frame rate F1001:1 out of range (1/100 to 1000 frames a second)"},
      {"YUV4MPEG2 W7 H2\n", "odd picture width (YUY2 needs pixel pairs)"},
      {"YUV4MPEG2 W8 H3 C420\n", "odd picture height in a 4:2:0 stream"},
      {"YUV4MPEG2 W8 H2 F0:1\n", "bad frame rate"},
      {"YUV4MPEG2 W8 H2 C444\n", "unsupported chroma layout C444 (only 4:2:0 and 4:2:2)"},
  };
  for (const auto& c : cases) {
    Reader in(c.bytes);
    ASSERT_EQ(in.reader.ReadHeader(), c.headerError) << c.bytes.substr(0, 24);
    if (*c.headerError) continue;
    std::vector<uint8_t> frame;
    EXPECT_EQ(in.reader.ReadFrame(&frame), c.frameResult) << c.bytes.substr(header.size(), 12);
    EXPECT_EQ(in.reader.error(), c.frameError);
  }
  Y4mHeader parsed;
  ASSERT_EQ(ParseY4mHeader("YUV4MPEG2 W720 H480 F30000:1001", &parsed), "");
  EXPECT_EQ(parsed.FrameStart(30000), 10010000000);  // 1001 s, no rounding summed up
}

TEST(Y4mStreamTest, TimesAtTheRateBoundsStayInRange) {
  const struct {
    const char* rate;
    int64_t duration;
  } cases[] = {{"F1:100", 1000000000}, {"F1000:1", 10000}, {"F2997:100", 333667}};
  for (const auto& c : cases) {
    Y4mHeader header;
    ASSERT_EQ(ParseY4mHeader(std::string("YUV4MPEG2 W8 H2 ") + c.rate, &header), "");
    EXPECT_EQ(header.FrameDuration(), c.duration) << c.rate;
    EXPECT_EQ(header.FrameStart(1), c.duration) << c.rate;
    EXPECT_EQ(header.FrameStart(INT64_MAX), INT64_MAX) << c.rate;  // saturates
  }
}

TEST(Y4mStreamTest, AFrameReadAheadIsTheNextOneRead) {
  const std::string header = "YUV4MPEG2 W2 H2 C420\n";
  Reader two(header + "FRAME\n\x10\x11\x12\x13\x80\x81" + "FRAME\n\x20\x21\x22\x23\x90\x91");
  ASSERT_EQ(two.reader.ReadHeader(), "");
  std::vector<uint8_t> frame;
  ASSERT_EQ(two.reader.ReadAhead(), 1);
  ASSERT_EQ(two.reader.ReadAhead(), 1);  // still the first
  ASSERT_EQ(two.reader.ReadFrame(&frame), 1);
  EXPECT_EQ(frame, (std::vector<uint8_t>{0x10, 0x80, 0x11, 0x81, 0x12, 0x80, 0x13, 0x81}));
  ASSERT_EQ(two.reader.ReadFrame(&frame), 1);
  EXPECT_EQ(frame[0], 0x20);
  EXPECT_EQ(two.reader.ReadAhead(), 0);
  EXPECT_EQ(two.reader.ReadFrame(&frame), 0);

  // A header alone, or a frame line and a few bytes of a huge picture, costs no frame's
  // memory (53 MB here). (Under AddressSanitizer mallinfo2 counts nothing.)
  for (const std::string_view rest : {"", "FRAME\nxyz"}) {
    Reader in("YUV4MPEG2 W8192 H4320\n" + std::string(rest));
    ASSERT_EQ(in.reader.ReadHeader(), "");
    const std::size_t before = mallinfo2().hblkhd;
    EXPECT_EQ(in.reader.ReadAhead(), rest.empty() ? 0 : -1);
    EXPECT_EQ(in.reader.ReadFrame(&frame), rest.empty() ? 0 : -1);
    EXPECT_LT(mallinfo2().hblkhd, before + (std::size_t{4} << 20));
  }
}

}  // namespace
}  // namespace korvalin
