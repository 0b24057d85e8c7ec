#include "filter/y4m_stream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <numeric>
#include <string>
#include <vector>

namespace korvalin {
namespace {

// The bytes in an unnamed temporary file, closed on destruction.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& bytes) : file_(std::tmpfile()) {
    std::fwrite(bytes.data(), 1, bytes.size(), file_);
    std::rewind(file_);
  }
  ~MemoryFile() { std::fclose(file_); }
  std::FILE* get() const { return file_; }

 private:
  std::FILE* file_;
};

std::string Frame(std::size_t bytes, uint8_t first) {
  std::string data(bytes, '\0');
  for (std::size_t i = 0; i < bytes; ++i) data[i] = static_cast<char>(first + i * 7);
  return "FRAME\n" + data;
}

TEST(Y4mHeaderTest, ParsesOrNamesTheProblem) {
  const struct {
    const char* line;
    const char* error;
  } cases[] = {
      {"YUV4MPEG2 W720 H576 F25:1 Ip A1:1 C420jpeg", ""},
      {"YUV4MPEG2 W720 H576 F30000:1001 C422 XYSCSS=422", ""},
      {"YUV4MPEG2 W720 H576", ""},
      {"YUV4MPEG W720 H576", "not a YUV4MPEG2 stream"},
      {"YUV4MPEG2 W720", "missing or bad picture size"},
      {"YUV4MPEG2 W-4 H2", "missing or bad picture size"},
      {"YUV4MPEG2 Wx H2", "bad width"},
      {"YUV4MPEG2 W99999999999 H2", "bad width"},
      {"YUV4MPEG2 W20000 H2", "picture too large"},
      {"YUV4MPEG2 W7 H2", "odd picture width (YUY2 needs pixel pairs)"},
      {"YUV4MPEG2 W8 H3 C420", "odd picture height in a 4:2:0 stream"},
      {"YUV4MPEG2 W8 H2 F0:1", "bad frame rate"},
      {"YUV4MPEG2 W8 H2 F25", "bad frame rate"},
      {"YUV4MPEG2 W8 H2 C444", "unsupported chroma layout C444 (only 4:2:0 and 4:2:2)"},
  };
  for (const auto& c : cases) {
    Y4mHeader header;
    EXPECT_EQ(ParseY4mHeader(c.line, &header), c.error) << c.line;
  }
  Y4mHeader header;
  ASSERT_EQ(ParseY4mHeader("YUV4MPEG2 W720 H480 F30000:1001", &header), "");
  EXPECT_EQ(header.FrameDuration(), 333666);
  EXPECT_EQ(header.FrameStart(30000), 10010000000);  // 1001 s, no rounding summed up
  EXPECT_EQ(header.chroma, Y4mChroma::k420);
}

TEST(Y4mStreamTest, Planar422RoundTripIsLossless) {
  const std::string input = "YUV4MPEG2 W6 H4 F25:1 C422\n" + Frame(6 * 4 * 2, 1) + Frame(48, 9);
  MemoryFile in(input);
  Y4mReader reader(in.get());
  ASSERT_EQ(reader.ReadHeader(), "");
  std::vector<uint8_t> first, second, unused;
  ASSERT_EQ(reader.ReadFrame(&first), 1);
  ASSERT_EQ(reader.ReadFrame(&second), 1);
  EXPECT_EQ(reader.ReadFrame(&unused), 0);
  EXPECT_EQ(first[0], 1);                                 // Y0
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
  const std::size_t frames = input.find("FRAME");
  EXPECT_EQ(output.substr(output.find("FRAME")), input.substr(frames));
}

TEST(Y4mStreamTest, Chroma420RowsAreRepeated) {
  // 4 x 2: luma 8 bytes, then one row of 2 U and one of 2 V.
  const std::string input =
      "YUV4MPEG2 W4 H2 C420mpeg2\nFRAME\n"
      "\x10\x11\x12\x13\x20\x21\x22\x23"
      "\x50\x51\x60\x61";
  MemoryFile in(input);
  Y4mReader reader(in.get());
  ASSERT_EQ(reader.ReadHeader(), "");
  std::vector<uint8_t> frame;
  ASSERT_EQ(reader.ReadFrame(&frame), 1);
  const std::vector<uint8_t> expected = {0x10, 0x50, 0x11, 0x60, 0x12, 0x51, 0x13, 0x61,
                                         0x20, 0x50, 0x21, 0x60, 0x22, 0x51, 0x23, 0x61};
  EXPECT_EQ(frame, expected);
}

TEST(Y4mStreamTest, DamagedStreamsGiveErrors) {
  const std::string header = "YUV4MPEG2 W4 H2 C422\n";
  const struct {
    std::string bytes;
    int result;
    const char* error;
  } cases[] = {
      {header + "FRAME\n" + std::string(16, 'x'), 1, ""},
      {header + "FRAME Ixyz\n" + std::string(16, 'x'), 1, ""},
      {header + "FRAME\n" + std::string(15, 'x'), -1, "truncated frame"},
      {header + "FRAMES\n" + std::string(16, 'x'), -1, "damaged frame header"},
      {header + "JUNK\n", -1, "damaged frame header"},
      {header + "FRAME", -1, "damaged frame header"},
      {header + std::string(5000, 'F'), -1, "damaged frame header"},
      {header, 0, ""},
  };
  for (const auto& c : cases) {
    MemoryFile in(c.bytes);
    Y4mReader reader(in.get());
    ASSERT_EQ(reader.ReadHeader(), "");
    std::vector<uint8_t> frame;
    EXPECT_EQ(reader.ReadFrame(&frame), c.result) << c.bytes.substr(header.size(), 12);
    EXPECT_EQ(reader.error(), c.error);
  }
}

TEST(Y4mStreamTest, DamagedHeadersGiveErrors) {
  const struct {
    std::string bytes;
    const char* error;
  } cases[] = {
      {"", "empty input"},
      {"YUV4MPEG2 W4 H2", "damaged YUV4MPEG2 header"},
      {"RIFF....", "not a YUV4MPEG2 stream"},
      {"YUV4MPEG2 W4 H2 " + std::string(5000, 'X') + "\n", "damaged YUV4MPEG2 header"},
  };
  for (const auto& c : cases) {
    MemoryFile in(c.bytes);
    Y4mReader reader(in.get());
    EXPECT_EQ(reader.ReadHeader(), c.error) << c.bytes.substr(0, 20);
  }
}

}  // namespace
}  // namespace korvalin
