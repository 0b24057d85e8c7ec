#pragma once

#include <cstdint>
#include <cstdio>

namespace korvalin::cli {

// The demo's test clip: 720 x 576 colour bars at 25 fps with a marker moving across them.
inline constexpr int32_t kDemoWidth = 720;
inline constexpr int32_t kDemoHeight = 576;
inline constexpr int32_t kDemoFps = 25;

// Writes `frames` frames of the clip as a YUV4MPEG2 4:2:2 stream. false when writing fails
// (the reader went away).
bool WriteDemoClip(std::FILE* file, int32_t frames);

}  // namespace korvalin::cli
