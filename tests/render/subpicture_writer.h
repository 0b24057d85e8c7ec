#pragma once

// Builds DVD subpicture units and the program stream packs that carry them.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "render/picture.h"

namespace korvalin::testing {

inline constexpr std::size_t kPackSize = 2048;

struct Run {  // length pixels of code 0..3; length 0 ends the row
  int32_t length;
  int32_t code;
};
using Row = std::vector<Run>;

// Run-length codes of one row, padded to a whole byte. Lengths up to 255.
inline std::string EncodeRow(const Row& runs) {
  std::string nibbles, out;
  for (const Run& r : runs) {
    const uint32_t c = static_cast<uint32_t>(r.length << 2 | (r.code & 3));
    const int n = r.length == 0 ? 4 : r.length < 4 ? 1 : r.length < 16 ? 2 : r.length < 64 ? 3 : 4;
    for (int i = n - 1; i >= 0; --i) nibbles.push_back(static_cast<char>(c >> (4 * i) & 15));
  }
  if (nibbles.size() % 2) nibbles.push_back(0);
  for (std::size_t i = 0; i < nibbles.size(); i += 2)
    out.push_back(static_cast<char>(nibbles[i] << 4 | nibbles[i + 1]));
  return out;
}

inline void PutU16(std::string& s, uint32_t v) {
  s += {static_cast<char>(v >> 8 & 0xFF), static_cast<char>(v & 0xFF)};
}

struct UnitSpec {
  int32_t x1 = 10, y1 = 20, width = 0, height = 0;
  std::array<uint8_t, 4> colour = {0, 1, 2, 3};  // palette index of codes 0..3
  std::array<uint8_t, 4> contrast = {0, 15, 15, 15};
  std::vector<Row> rows;       // top first
  int32_t delay = 100;         // of the second control sequence
  bool secondSequence = true;  // false: the first sequence points at itself
  std::string extraCommands;   // put before the first sequence's 0xFF
};

inline std::string BuildUnit(const UnitSpec& u) {
  std::string fields[2], body, commands;
  for (std::size_t y = 0; y < u.rows.size(); ++y) fields[y % 2] += EncodeRow(u.rows[y]);
  const auto control = static_cast<uint32_t>(4 + fields[0].size() + fields[1].size());
  const auto nibbles = [&](const std::array<uint8_t, 4>& a) {
    commands += {static_cast<char>(a[3] << 4 | a[2]), static_cast<char>(a[1] << 4 | a[0])};
  };
  const auto area = [&](uint32_t from, uint32_t size) {
    const uint32_t v = from << 12 | ((from + size - 1) & 0xFFF);
    commands += {static_cast<char>(v >> 16), static_cast<char>(v >> 8), static_cast<char>(v)};
  };
  commands += '\x03', nibbles(u.colour), commands += '\x04', nibbles(u.contrast);
  commands += '\x05', area(u.x1, u.width), area(u.y1, u.height), commands += '\x06';
  PutU16(commands, 4);
  PutU16(commands, static_cast<uint32_t>(4 + fields[0].size()));
  commands += u.extraCommands + "\x01\xFF";
  const auto second = static_cast<uint32_t>(control + 4 + commands.size());
  body = fields[0] + fields[1] + std::string(2, '\0');
  PutU16(body, u.secondSequence ? second : control);
  body += commands;
  if (u.secondSequence) {
    PutU16(body, static_cast<uint32_t>(u.delay));
    PutU16(body, second);
    body += "\x02\xFF";
  }
  std::string unit;
  PutU16(unit, static_cast<uint32_t>(4 + body.size()));
  PutU16(unit, control);
  return unit + body;
}

// What a unit should decode to with the palette's luma values.
inline Picture ExpectedPicture(const UnitSpec& u, const std::array<uint8_t, 16>& luma) {
  Picture p(u.width, u.height);
  for (int32_t y = 0; y < u.height && y < static_cast<int32_t>(u.rows.size()); ++y) {
    int32_t x = 0;
    for (const Run& r : u.rows[static_cast<std::size_t>(y)]) {
      if (r.length == 0) break;
      const auto code = static_cast<std::size_t>(r.code);
      for (const int32_t end = std::min(x + r.length, u.width); x < end; ++x)
        p.pixels[static_cast<std::size_t>(y * u.width + x)] =
            u.contrast[code] > 3 ? luma[u.colour[code]] : 0;
    }
  }
  return p;
}

struct PackLayout {
  uint8_t streamId = 0xBD;   // private stream 1
  uint8_t substream = 0x20;  // subpicture stream 0
  bool timeStamp = true;     // a PTS in the PES header
  bool scrambled = false;
  uint8_t headerDataLength = 5;
};

inline std::size_t PackRoom(const PackLayout& s) {
  return kPackSize - 24 - s.headerDataLength;
}

// One 2048-byte pack carrying payload (at most PackRoom bytes), the rest a padding stream.
inline std::string BuildPack(const std::string& payload, const PackLayout& s = {}) {
  std::string data(s.headerDataLength, '\xFF');
  if (s.timeStamp && !data.empty()) data[0] = '\x21';
  const std::string pes = std::string{static_cast<char>(s.scrambled ? 0x91 : 0x81),
                                      static_cast<char>(s.timeStamp ? 0x80 : 0),
                                      static_cast<char>(s.headerDataLength)} +
                          data + static_cast<char>(s.substream) + payload;
  std::string p("\x00\x00\x01\xBA\x44\x00\x04\x00\x04\x01\x01\x89\xC3\xF8\x00\x00\x01", 17);
  p.push_back(static_cast<char>(s.streamId));
  PutU16(p, static_cast<uint32_t>(pes.size()));
  p += pes;
  if (p.size() + 6 <= kPackSize) {
    p += std::string("\x00\x00\x01\xBE", 4);
    PutU16(p, static_cast<uint32_t>(kPackSize - p.size() - 2));
  }
  p.resize(kPackSize, '\xFF');
  return p;
}

inline std::string VideoPack() {
  const PackLayout video{0xE0, 0x00, false, false, 0};
  return BuildPack(std::string(PackRoom(video), '\x47'), video);
}

// The unit in packs of substream: the first time-stamped, the others with nextHeaderLength
// bytes of PES header data.
inline std::vector<std::string> SplitUnit(const std::string& unit, uint8_t substream = 0x20,
                                          uint8_t nextHeaderLength = 0) {
  std::vector<std::string> packs;
  PackLayout s{0xBD, substream, true, false, 5};
  for (std::size_t at = 0; at == 0 || at < unit.size(); at += PackRoom(s)) {
    if (at > 0) s.timeStamp = false, s.headerDataLength = nextHeaderLength;
    packs.push_back(BuildPack(unit.substr(at, PackRoom(s)), s));
  }
  return packs;
}

inline std::array<uint8_t, 16> TestLuma() {  // entry i: 16 i + 15
  std::array<uint8_t, 16> luma{};
  for (std::size_t i = 0; i < 16; ++i) luma[i] = static_cast<uint8_t>(16 * i + 15);
  return luma;
}

}  // namespace korvalin::testing
