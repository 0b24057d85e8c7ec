#include "filter/y4m_stream.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "base/saturating_cast.h"

namespace korvalin {

namespace {

constexpr std::string_view kMagic = "YUV4MPEG2";
constexpr std::string_view kFrameTag = "FRAME";
constexpr std::size_t kMaxHeaderLine = 4096;
// A frame is read in pieces of this size, so a short stream never holds more than it sent.
constexpr std::size_t kReadPiece = std::size_t{1} << 20;

bool ParseInt(std::string_view text, int32_t* value) {
  const char* end = text.data() + text.size();
  const auto [ptr, ec] = std::from_chars(text.data(), end, *value);
  return ec == std::errc() && ptr == end;
}

// "N:D" with both positive.
bool ParseRatio(std::string_view text, int32_t* numerator, int32_t* denominator) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return false;
  return ParseInt(text.substr(0, colon), numerator) &&
         ParseInt(text.substr(colon + 1), denominator) && *numerator > 0 && *denominator > 0;
}

std::string ParseChroma(std::string_view value, Y4mChroma* chroma) {
  if (value == "422") {
    *chroma = Y4mChroma::k422;
  } else if (value.starts_with("420")) {  // 420jpeg, 420mpeg2, 420paldv: siting is ignored
    *chroma = Y4mChroma::k420;
  } else {
    return "unsupported chroma layout C" + std::string(value) + " (only 4:2:0 and 4:2:2)";
  }
  return "";
}

std::string ParseParameter(std::string_view token, Y4mHeader* header) {
  const std::string_view value = token.substr(1);
  switch (token[0]) {
    case 'W':
      return ParseInt(value, &header->width) ? "" : "bad width";
    case 'H':
      return ParseInt(value, &header->height) ? "" : "bad height";
    case 'F':
      return ParseRatio(value, &header->rateNumerator, &header->rateDenominator) ? ""
                                                                                 : "bad frame rate";
    case 'C':
      return ParseChroma(value, &header->chroma);
    default:  // interlacing, pixel aspect, comments and extensions do not matter here
      return "";
  }
}

std::string CheckRate(const Y4mHeader& header) {
  const int64_t numerator = header.rateNumerator, denominator = header.rateDenominator;
  if (numerator <= kY4mMaxFramesPerSecond * denominator &&
      numerator * kY4mMaxSecondsPerFrame >= denominator) {
    return "";
  }
  return "frame rate F" + std::to_string(numerator) + ":" + std::to_string(denominator) +
         " out of range (1/" + std::to_string(kY4mMaxSecondsPerFrame) + " to " +
         std::to_string(kY4mMaxFramesPerSecond) + " frames a second)";
}

std::string CheckSize(const Y4mHeader& header) {
  if (header.width <= 0 || header.height <= 0) return "missing or bad picture size";
  if (header.width > kY4mMaxSide || header.height > kY4mMaxSide ||
      int64_t{header.width} * header.height > kY4mMaxPixels) {
    return "picture too large (at most " + std::to_string(kY4mMaxSide) + " pixels a side and " +
           std::to_string(kY4mMaxPixels) + " in all)";
  }
  if (header.width % 2 != 0) return "odd picture width (YUY2 needs pixel pairs)";
  if (header.chroma == Y4mChroma::k420 && header.height % 2 != 0)
    return "odd picture height in a 4:2:0 stream";
  return "";
}

}  // namespace

int64_t Y4mHeader::FrameDuration() const {
  return int64_t{10000000} * rateDenominator / rateNumerator;
}

int64_t Y4mHeader::FrameStart(int64_t n) const {
  const long double ticks = static_cast<long double>(n) * 10000000.0L * rateDenominator;
  return SaturatingCast<int64_t>(ticks / rateNumerator);
}

std::size_t Y4mHeader::Yuy2FrameSize() const {
  return std::size_t(width) * std::size_t(height) * 2;
}

std::string ParseY4mHeader(std::string_view line, Y4mHeader* header) {
  *header = Y4mHeader{};
  header->width = header->height = -1;
  if (!line.starts_with(kMagic)) return "not a YUV4MPEG2 stream";
  line.remove_prefix(kMagic.size());
  while (!line.empty()) {
    const std::size_t blank = line.find(' ');
    const std::string_view token = line.substr(0, blank);
    line = blank == std::string_view::npos ? std::string_view() : line.substr(blank + 1);
    if (token.empty()) continue;
    const std::string error = ParseParameter(token, header);
    if (!error.empty()) return error;
  }
  const std::string error = CheckSize(*header);
  return error.empty() ? CheckRate(*header) : error;
}

std::size_t PlanarFrameSize(const Y4mHeader& header) {
  const std::size_t luma = std::size_t(header.width) * std::size_t(header.height);
  const std::size_t chromaRows = header.chroma == Y4mChroma::k422 ? std::size_t(header.height)
                                                                  : std::size_t(header.height) / 2;
  return luma + 2 * (std::size_t(header.width) / 2) * chromaRows;
}

void PlanarToYuy2(const Y4mHeader& header, std::span<const uint8_t> planar,
                  std::span<uint8_t> yuy2) {
  const std::size_t w = std::size_t(header.width), h = std::size_t(header.height);
  const std::size_t cw = w / 2;
  const std::size_t chromaRows = header.chroma == Y4mChroma::k422 ? h : h / 2;
  const uint8_t* y = planar.data();
  const uint8_t* u = y + w * h;
  const uint8_t* v = u + cw * chromaRows;
  for (std::size_t row = 0; row < h; ++row) {
    const std::size_t chromaRow = header.chroma == Y4mChroma::k422 ? row : row / 2;
    const uint8_t* yRow = y + row * w;
    const uint8_t* uRow = u + chromaRow * cw;
    const uint8_t* vRow = v + chromaRow * cw;
    uint8_t* out = yuy2.data() + row * w * 2;
    for (std::size_t pair = 0; pair < cw; ++pair) {
      out[4 * pair + 0] = yRow[2 * pair];
      out[4 * pair + 1] = uRow[pair];
      out[4 * pair + 2] = yRow[2 * pair + 1];
      out[4 * pair + 3] = vRow[pair];
    }
  }
}

void Yuy2ToPlanar422(int32_t width, int32_t height, std::span<const uint8_t> yuy2,
                     std::span<uint8_t> planar) {
  const std::size_t w = std::size_t(width), h = std::size_t(height), cw = w / 2;
  uint8_t* y = planar.data();
  uint8_t* u = y + w * h;
  uint8_t* v = u + cw * h;
  for (std::size_t row = 0; row < h; ++row) {
    const uint8_t* in = yuy2.data() + row * w * 2;
    for (std::size_t pair = 0; pair < cw; ++pair) {
      y[row * w + 2 * pair] = in[4 * pair + 0];
      u[row * cw + pair] = in[4 * pair + 1];
      y[row * w + 2 * pair + 1] = in[4 * pair + 2];
      v[row * cw + pair] = in[4 * pair + 3];
    }
  }
}

bool Y4mReader::ReadLine(std::string* line, std::size_t limit, bool* atEnd) {
  line->clear();
  *atEnd = false;
  for (;;) {
    const int c = std::fgetc(file_);
    if (c == EOF) {
      *atEnd = line->empty();
      return false;
    }
    if (c == '\n') return true;
    if (line->size() == limit) return false;
    line->push_back(static_cast<char>(c));
  }
}

std::string Y4mReader::ReadHeader() {
  std::string line;
  bool atEnd = false;
  if (!ReadLine(&line, kMaxHeaderLine, &atEnd)) {
    error_ = atEnd ? "empty input" : "damaged YUV4MPEG2 header";
    if (!line.starts_with(kMagic) && !atEnd) error_ = "not a YUV4MPEG2 stream";
    return error_;
  }
  error_ = ParseY4mHeader(line, &header_);
  return error_;
}

int Y4mReader::ReadAhead() {
  if (!haveAhead_) {
    aheadResult_ = ReadNextFrame(&ahead_);
    haveAhead_ = true;
  }
  return aheadResult_;
}

int Y4mReader::ReadFrame(std::vector<uint8_t>* frame) {
  if (!haveAhead_) return ReadNextFrame(frame);
  haveAhead_ = false;
  if (aheadResult_ == 1) frame->swap(ahead_);
  return aheadResult_;
}

bool Y4mReader::ReadPlanar(std::size_t size) {
  for (std::size_t have = 0; have < size;) {
    const std::size_t piece = std::min(kReadPiece, size - have);
    if (planar_.size() < have + piece) planar_.resize(have + piece);
    if (std::fread(planar_.data() + have, 1, piece, file_) != piece) return false;
    have += piece;
  }
  return true;
}

int Y4mReader::ReadNextFrame(std::vector<uint8_t>* frame) {
  std::string line;
  bool atEnd = false;
  if (!ReadLine(&line, kMaxHeaderLine, &atEnd)) {
    if (atEnd) return 0;
    error_ = "damaged frame header";
    return -1;
  }
  if (!line.starts_with(kFrameTag) ||
      (line.size() > kFrameTag.size() && line[kFrameTag.size()] != ' ')) {
    error_ = "damaged frame header";
    return -1;
  }
  if (!ReadPlanar(PlanarFrameSize(header_))) {
    error_ = "truncated frame";
    return -1;
  }
  frame->resize(header_.Yuy2FrameSize());
  PlanarToYuy2(header_, planar_, *frame);
  return 1;
}

int64_t Y4mReader::CountFrames() {
  const long here = std::ftell(file_);
  if (here < 0 || std::fseek(file_, 0, SEEK_END) != 0) return -1;
  const long end = std::ftell(file_);
  if (std::fseek(file_, here, SEEK_SET) != 0 || end < here) return -1;
  const std::size_t frameBytes = kFrameTag.size() + 1 + PlanarFrameSize(header_);
  return static_cast<int64_t>(static_cast<std::size_t>(end - here) / frameBytes);
}

bool Y4mWriter::WriteHeader(int32_t width, int32_t height, int32_t rateNumerator,
                            int32_t rateDenominator) {
  width_ = width;
  height_ = height;
  planar_.resize(std::size_t(width) * std::size_t(height) * 2);
  return std::fprintf(file_, "YUV4MPEG2 W%d H%d F%d:%d Ip A1:1 C422\n", width, height,
                      rateNumerator, rateDenominator) > 0;
}

bool Y4mWriter::WriteFrame(std::span<const uint8_t> yuy2) {
  if (yuy2.size() < planar_.size()) return false;
  Yuy2ToPlanar422(width_, height_, yuy2, planar_);
  return std::fputs("FRAME\n", file_) >= 0 &&
         std::fwrite(planar_.data(), 1, planar_.size(), file_) == planar_.size();
}

}  // namespace korvalin
