#include "base/std_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace korvalin {
namespace {

std::string ReadAll(StdFile& file) {
  std::string bytes;
  char c = 0;
  while (file.ReadByte(&c) == 0) bytes += c;
  return bytes;
}

TEST(StdFile, TextModeReadsCrLfAsLfOnly) {
  const std::string bytes = "a\r\nb\rc\r\r\nd\r";
  struct Case {
    const char* mode;
    std::string want;
  };
  const Case cases[] = {{"rt", "a\nb\rc\r\nd\r"}, {"rb", bytes}, {"r", bytes}};
  const auto path = std::filesystem::temp_directory_path() / "korvalin_std_file_test.txt";
  std::ofstream(path, std::ios::binary) << bytes;
  for (const Case& c : cases) {
    StdFile file;
    ASSERT_EQ(file.Open(path.c_str(), c.mode), 0);
    EXPECT_EQ(ReadAll(file), c.want) << c.mode;
    EXPECT_NE(file.IsEof(), 0);
    StdFile memory;
    ASSERT_EQ(memory.OpenMemory(bytes.data(), bytes.size(), c.mode), 0);
    EXPECT_EQ(ReadAll(memory), c.want) << c.mode;
  }
  std::filesystem::remove(path);
}

TEST(StdFile, OpenFailsAndClosedFileReadsNothing) {
  StdFile file;
  EXPECT_EQ(file.Open("/nonexistent/korvalin/x", "rt"), 1);
  char c = 0;
  EXPECT_EQ(file.ReadByte(&c), -1);
  EXPECT_EQ(file.Close(), 0);
  StdFile empty;
  ASSERT_EQ(empty.OpenMemory("", 0, "rb"), 0);
  EXPECT_EQ(empty.ReadByte(&c), -1);
}

TEST(StdFile, SeekAndTell) {
  StdFile file;
  ASSERT_EQ(file.OpenMemory("0123456789", 10, "rb"), 0);
  EXPECT_EQ(file.Seek(4, SEEK_SET), 0);
  EXPECT_EQ(file.Tell(), 4);
  char c = 0;
  ASSERT_EQ(file.ReadByte(&c), 0);
  EXPECT_EQ(c, '4');
}

}  // namespace
}  // namespace korvalin
