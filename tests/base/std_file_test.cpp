#include "base/std_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/temp_folder.h"

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
  const testing::TempFolder folder;
  const auto path = folder.Write("text.txt", bytes);
  for (const auto& [mode, want] :
       {std::pair<const char*, std::string>{"rt", "a\nb\rc\r\nd\r"}, {"rb", bytes}, {"r", bytes}}) {
    StdFile file, memory;
    ASSERT_EQ(file.Open(path.c_str(), mode), 0);
    EXPECT_EQ(ReadAll(file), want) << mode;
    EXPECT_NE(file.IsEof(), 0);
    ASSERT_EQ(memory.OpenMemory(bytes.data(), bytes.size(), mode), 0);
    EXPECT_EQ(ReadAll(memory), want) << mode;
  }
}

TEST(StdFile, OpenFailsClosedFilesReadNothingAndSeekWorks) {
  StdFile file;
  EXPECT_EQ(file.Open("/nonexistent/korvalin/x", "rt"), 1);
  char c = 0;
  EXPECT_EQ(file.ReadByte(&c), -1);
  EXPECT_EQ(file.Close(), 0);
  StdFile empty;
  ASSERT_EQ(empty.OpenMemory("", 0, "rb"), 0);
  EXPECT_EQ(empty.ReadByte(&c), -1);
  StdFile digits;
  ASSERT_EQ(digits.OpenMemory("0123456789", 10, "rb"), 0);
  EXPECT_EQ(digits.Seek(4, SEEK_SET), 0);
  EXPECT_EQ(digits.Tell(), 4);
  ASSERT_EQ(digits.ReadByte(&c), 0);
  EXPECT_EQ(c, '4');
}

}  // namespace
}  // namespace korvalin
