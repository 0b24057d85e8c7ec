#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvalin {

// YUV4MPEG2 streams as the tool reads and writes them. Frames travel as packed YUY2, top
// row first: 4:2:2 planes pack into YUY2 and back without loss; 4:2:0 chroma rows are
// repeated to make 4:2:2.
enum class Y4mChroma { k420, k422 };

struct Y4mHeader {
  int32_t width = 0;
  int32_t height = 0;
  int32_t rateNumerator = 25;  // frames per second = numerator / denominator
  int32_t rateDenominator = 1;
  Y4mChroma chroma = Y4mChroma::k420;

  // One frame's duration in 100 ns units.
  int64_t FrameDuration() const;
  // Start of frame n in 100 ns units, exact over long streams (no summed rounding).
  int64_t FrameStart(int64_t n) const;
  // Bytes of one packed YUY2 frame.
  std::size_t Yuy2FrameSize() const;
};

// Bounds on what a header may declare: beyond them a stream is refused rather than trusted
// with memory and time arithmetic.
inline constexpr int32_t kY4mMaxSide = 16384;
inline constexpr int64_t kY4mMaxPixels = int64_t{8192} * 4320;  // 8K
inline constexpr int32_t kY4mMaxFramesPerSecond = 1000;
inline constexpr int32_t kY4mMaxSecondsPerFrame = 100;  // a frame's duration fits 31 bits

// Parses the stream header line (without its line feed). "" on success, else what is wrong.
std::string ParseY4mHeader(std::string_view line, Y4mHeader* header);

// The planar bytes of one frame in the header's chroma layout.
std::size_t PlanarFrameSize(const Y4mHeader& header);
// Packs one planar frame into YUY2 (`yuy2` holds Yuy2FrameSize() bytes).
void PlanarToYuy2(const Y4mHeader& header, std::span<const uint8_t> planar,
                  std::span<uint8_t> yuy2);
// Unpacks one YUY2 frame into 4:2:2 planes (2 * width * height bytes).
void Yuy2ToPlanar422(int32_t width, int32_t height, std::span<const uint8_t> yuy2,
                     std::span<uint8_t> planar);

// Reads a stream frame by frame from a file it does not own.
class Y4mReader {
 public:
  explicit Y4mReader(std::FILE* file) : file_(file) {}
  // "" on success, else the error.
  std::string ReadHeader();
  // Reads the next frame as YUY2 into *frame: 1 read, 0 clean end of stream, -1 error.
  // Memory grows with the bytes that arrive, not with the size the header claims.
  int ReadFrame(std::vector<uint8_t>* frame);
  // Reads the next frame ahead, with ReadFrame's result, so that a caller learns whether the
  // stream holds one before it sets up anything the size of a frame. The next ReadFrame
  // returns that frame (or that result) without reading.
  int ReadAhead();
  // After the header: the frames a seekable file holds when each has a bare "FRAME" line,
  // or -1 when the stream cannot tell (a pipe).
  int64_t CountFrames();
  const Y4mHeader& header() const { return header_; }
  const std::string& error() const { return error_; }

 private:
  // A line up to its line feed, at most `limit` bytes; false at end of file or too long.
  bool ReadLine(std::string* line, std::size_t limit, bool* atEnd);
  int ReadNextFrame(std::vector<uint8_t>* frame);
  // Reads one planar frame into planar_; false when the stream ends first.
  bool ReadPlanar(std::size_t size);

  std::FILE* file_;
  Y4mHeader header_;
  std::vector<uint8_t> planar_;
  std::string error_;
  std::vector<uint8_t> ahead_;
  int aheadResult_ = 0;
  bool haveAhead_ = false;
};

// Writes 4:2:2 streams from YUY2 frames.
class Y4mWriter {
 public:
  explicit Y4mWriter(std::FILE* file) : file_(file) {}
  // false when writing fails.
  bool WriteHeader(int32_t width, int32_t height, int32_t rateNumerator, int32_t rateDenominator);
  bool WriteFrame(std::span<const uint8_t> yuy2);

 private:
  std::FILE* file_;
  int32_t width_ = 0;
  int32_t height_ = 0;
  std::vector<uint8_t> planar_;
};

}  // namespace korvalin
