#pragma once

// Builds DVD subpicture units and the MPEG-2 program stream packs that carry them, so that
// each decoding case is made on purpose. Bytes are kept in std::string, ready for a
// fixture file or StdFile::OpenMemory.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "render/picture.h"

namespace korvalin::testing {

inline constexpr std::size_t kPackSize = 2048;

// One run of a row: length pixels of pixel code 0..3; length 0 codes an end of row
// (four zero nibbles and the code, "rest of the row transparent").
struct Run {
  int32_t length;
  int32_t code;
};
using Row = std::vector<Run>;

// Run-length codes of one row, padded to a whole byte. Lengths from 1 to 255.
inline std::string EncodeRow(const Row& runs) {
  std::vector<uint8_t> nibbles;
  for (const Run& r : runs) {
    const uint32_t c = (static_cast<uint32_t>(r.length) << 2) | static_cast<uint32_t>(r.code & 3);
    if (r.length == 0) {
      nibbles.insert(nibbles.end(), {0, 0, 0, static_cast<uint8_t>(c)});
    } else if (r.length < 4) {
      nibbles.push_back(static_cast<uint8_t>(c));
    } else if (r.length < 16) {
      nibbles.insert(nibbles.end(), {static_cast<uint8_t>(c >> 4), static_cast<uint8_t>(c & 15)});
    } else if (r.length < 64) {
      nibbles.insert(nibbles.end(),
                     {static_cast<uint8_t>(c >> 8), static_cast<uint8_t>((c >> 4) & 15),
                      static_cast<uint8_t>(c & 15)});
    } else {
      nibbles.insert(nibbles.end(),
                     {static_cast<uint8_t>(c >> 12), static_cast<uint8_t>((c >> 8) & 15),
                      static_cast<uint8_t>((c >> 4) & 15), static_cast<uint8_t>(c & 15)});
    }
  }
  if (nibbles.size() % 2) nibbles.push_back(0);
  std::string out;
  for (std::size_t i = 0; i < nibbles.size(); i += 2)
    out.push_back(static_cast<char>((nibbles[i] << 4) | nibbles[i + 1]));
  return out;
}

inline void PutU16(std::string& s, uint32_t v) {
  s.push_back(static_cast<char>((v >> 8) & 0xFF));
  s.push_back(static_cast<char>(v & 0xFF));
}

// A unit made from rows and display settings.
struct UnitSpec {
  int32_t x1 = 10;
  int32_t y1 = 20;
  int32_t width = 0;
  int32_t height = 0;
  std::array<uint8_t, 4> colour = {0, 1, 2, 3};  // palette index of pixel codes 0..3
  std::array<uint8_t, 4> contrast = {0, 15, 15, 15};
  std::vector<Row> rows;       // height rows, top first
  int32_t delay = 100;         // delay of the second control sequence
  bool secondSequence = true;  // false: the first 0xFF has nothing after it
  std::string extraCommands;   // put into the first sequence before its 0xFF
};

// The whole unit: size, control offset, top field, bottom field, control sequences.
inline std::string BuildUnit(const UnitSpec& layout) {
  std::string top, bottom;
  for (std::size_t y = 0; y < layout.rows.size(); ++y)
    (y % 2 == 0 ? top : bottom) += EncodeRow(layout.rows[y]);
  const uint32_t topOffset = 4;
  const uint32_t bottomOffset = 4 + static_cast<uint32_t>(top.size());
  const uint32_t control = bottomOffset + static_cast<uint32_t>(bottom.size());
  const int32_t x2 = layout.x1 + layout.width - 1;
  const int32_t y2 = layout.y1 + layout.height - 1;
  std::string commands;
  commands += '\x03';
  commands.push_back(static_cast<char>((layout.colour[3] << 4) | layout.colour[2]));
  commands.push_back(static_cast<char>((layout.colour[1] << 4) | layout.colour[0]));
  commands += '\x04';
  commands.push_back(static_cast<char>((layout.contrast[3] << 4) | layout.contrast[2]));
  commands.push_back(static_cast<char>((layout.contrast[1] << 4) | layout.contrast[0]));
  commands += '\x05';
  commands.push_back(static_cast<char>(layout.x1 >> 4));
  commands.push_back(static_cast<char>(((layout.x1 & 15) << 4) | ((x2 >> 8) & 15)));
  commands.push_back(static_cast<char>(x2 & 0xFF));
  commands.push_back(static_cast<char>(layout.y1 >> 4));
  commands.push_back(static_cast<char>(((layout.y1 & 15) << 4) | ((y2 >> 8) & 15)));
  commands.push_back(static_cast<char>(y2 & 0xFF));
  commands += '\x06';
  PutU16(commands, topOffset);
  PutU16(commands, bottomOffset);
  commands += layout.extraCommands;
  commands += '\x01';
  commands += '\xFF';
  std::string sequences;
  const uint32_t second = control + 4 + static_cast<uint32_t>(commands.size());
  PutU16(sequences, 0);
  PutU16(sequences, layout.secondSequence ? second : control);
  sequences += commands;
  if (layout.secondSequence) {
    PutU16(sequences, static_cast<uint32_t>(layout.delay));
    PutU16(sequences, second);
    sequences += "\x02\xFF";
  }
  std::string unit;
  PutU16(unit, static_cast<uint32_t>(4 + top.size() + bottom.size() + sequences.size()));
  PutU16(unit, control);
  return unit + top + bottom + sequences;
}

// What a unit should decode to, with the palette's luma values.
inline Picture ExpectedPicture(const UnitSpec& layout, const std::array<uint8_t, 16>& luma) {
  Picture p(layout.width, layout.height);
  for (int32_t y = 0; y < layout.height && y < static_cast<int32_t>(layout.rows.size()); ++y) {
    int32_t x = 0;
    for (const Run& r : layout.rows[static_cast<std::size_t>(y)]) {
      if (r.length == 0 || x >= layout.width) break;
      const int32_t n = std::min(r.length, layout.width - x);
      const uint8_t v = layout.contrast[static_cast<std::size_t>(r.code)] > 3
                            ? luma[layout.colour[static_cast<std::size_t>(r.code)]]
                            : 0;
      for (int32_t i = 0; i < n; ++i)
        p.pixels[static_cast<std::size_t>(y * layout.width + x + i)] = v;
      x += n;
    }
  }
  return p;
}

struct PackSpec {
  uint8_t streamId = 0xBD;   // private stream 1; 0xE0 would be video
  uint8_t substream = 0x20;  // subpicture stream 0
  bool timeStamp = true;     // a PTS in the PES header (first pack of a unit)
  bool scrambled = false;
  uint8_t headerDataLength = 5;  // h; at least 5 with a time stamp
};

// Payload room of a pack: 2048 - 24 - h.
inline std::size_t PackRoom(const PackSpec& layout) {
  return kPackSize - 24 - layout.headerDataLength;
}

// One 2048-byte pack with payload (at most PackRoom bytes) after the substream byte; the
// rest is a padding stream.
inline std::string BuildPack(const std::string& payload, const PackSpec& layout = {}) {
  std::string p("\x00\x00\x01\xBA\x44\x00\x04\x00\x04\x01\x01\x89\xC3\xF8", 14);
  std::string pesHeader;
  pesHeader.push_back(static_cast<char>(0x81 | (layout.scrambled ? 0x10 : 0)));
  pesHeader.push_back(static_cast<char>(layout.timeStamp ? 0x80 : 0x00));
  pesHeader.push_back(static_cast<char>(layout.headerDataLength));
  std::string data(layout.headerDataLength, '\xFF');
  if (layout.timeStamp && layout.headerDataLength > 0) data[0] = '\x21';
  pesHeader += data;
  pesHeader.push_back(static_cast<char>(layout.substream));
  pesHeader += payload;
  p += std::string("\x00\x00\x01", 3);
  p.push_back(static_cast<char>(layout.streamId));
  PutU16(p, static_cast<uint32_t>(pesHeader.size()));
  p += pesHeader;
  if (p.size() + 6 <= kPackSize) {  // padding stream
    const std::size_t rest = kPackSize - p.size() - 6;
    p += std::string("\x00\x00\x01\xBE", 4);
    PutU16(p, static_cast<uint32_t>(rest));
    p += std::string(rest, '\xFF');
  }
  p.resize(kPackSize, '\xFF');
  return p;
}

// A video pack: not private stream 1, no time stamp flag of ours, substream byte arbitrary.
inline std::string VideoPack() {
  PackSpec layout;
  layout.streamId = 0xE0;
  layout.timeStamp = false;
  layout.headerDataLength = 0;
  layout.substream = 0x00;
  return BuildPack(std::string(PackRoom(layout), '\x47'), layout);
}

// The unit cut into packs of substream: the first with a time stamp, the others without,
// their PES header data nextHeaderLength bytes long.
inline std::vector<std::string> SplitUnit(const std::string& unit, uint8_t substream = 0x20,
                                          uint8_t nextHeaderLength = 0) {
  std::vector<std::string> packs;
  PackSpec first;
  first.substream = substream;
  PackSpec next = first;
  next.timeStamp = false;
  next.headerDataLength = nextHeaderLength;
  std::size_t at = 0;
  bool isFirst = true;
  do {
    const PackSpec& layout = isFirst ? first : next;
    const std::size_t take = std::min(PackRoom(layout), unit.size() - at);
    packs.push_back(BuildPack(unit.substr(at, take), layout));
    at += take;
    isFirst = false;
  } while (at < unit.size());
  return packs;
}

// A plain test palette: entry i has luma 16 * i + 15.
inline std::array<uint8_t, 16> TestLuma() {
  std::array<uint8_t, 16> luma{};
  for (std::size_t i = 0; i < 16; ++i) luma[i] = static_cast<uint8_t>(16 * i + 15);
  return luma;
}

}  // namespace korvalin::testing
