#include "video/frame_row.h"

#include <gtest/gtest.h>

#include "video_test_support.h"

namespace korvalin {
namespace {

struct OrientationCase {
  int32_t height;
  bool flipped;
  int32_t memoryRowOfRow0;  // which stored row holds picture row 0
};

// Positive heights are bottom-up; a flip reverses whichever order the format has.
TEST(FrameRowTest, Row0FollowsHeightSignAndFlip) {
  const OrientationCase cases[] = {{4, false, 3}, {4, true, 0}, {-4, false, 0}, {-4, true, 3}};
  uint8_t buffer[6 * 2 * 4] = {};
  for (const OrientationCase& c : cases) {
    const VideoFormat format = testing::MakeFormat(6, c.height, 16);
    const int32_t stride = 12;
    EXPECT_EQ(FrameRow(buffer, 0, format, c.flipped), buffer + c.memoryRowOfRow0 * stride)
        << c.height << " " << c.flipped;
    EXPECT_EQ(FrameRow(buffer, 3, format, c.flipped), buffer + (3 - c.memoryRowOfRow0) * stride);
    EXPECT_EQ(FrameRow(buffer, -1, format, c.flipped), nullptr);
    EXPECT_EQ(FrameRow(buffer, 4, format, c.flipped), nullptr);
  }
}

}  // namespace
}  // namespace korvalin
