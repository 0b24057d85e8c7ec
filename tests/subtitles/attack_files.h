#pragma once

// Generated subtitle files built to make a reader work hard: unclosed SAMI comments and style
// blocks, long entity captions, many classes, VobSub index stamps that all name one unit, a
// 4096 x 4096 unit, Sub Station Alpha picture events naming one bitmap, RealText time tags in
// reverse order. The regression tests use them small; bench_attack_load at full size.

#include <cstdint>
#include <cstdio>
#include <string>

#include "../render/picture_bmp_writer.h"
#include "vobsub_writer.h"

namespace korvalin::testing {

inline std::string Repeated(const std::string& piece, int count) {
  std::string out;
  out.reserve(piece.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) out += piece;
  return out;
}

// One caption, then count comments that never close (each ends at a ">" of its own).
inline std::string SamiUnclosedComments(int count) {
  return "<SAMI><BODY><SYNC Start=1000><P>Hello\n" + Repeated("<!--x>", count) +
         "\n</BODY></SAMI>\n";
}

// count STYLE tags without "</STYLE>", then one caption.
inline std::string SamiUnclosedStyles(int count) {
  return "<SAMI><HEAD>" + Repeated("<STYLE>", count) +
         "</HEAD><BODY><SYNC Start=1000><P>Hello</BODY></SAMI>\n";
}

// One caption made of count copies of entity (named, numeric or "&amp;"); the "é" makes the
// file UTF-8, so that character references are written as UTF-8 too.
inline std::string SamiEntityCaption(int count, const std::string& entity = "&nbsp;") {
  return "<SAMI><BODY><SYNC Start=1000><P>\xC3\xA9" + Repeated(entity, count) +
         "x\n<SYNC Start=9000><P>&nbsp;\n</BODY></SAMI>\n";
}

// count classes declared in the style sheet (all sharing one rule), each named by one caption.
inline std::string SamiClasses(int count) {
  std::string selectors, body;
  for (int i = 0; i < count; ++i) {
    const std::string name = "C" + std::to_string(i);
    selectors += (i ? ", ." : ".") + name;
    body += "<SYNC Start=" + std::to_string(1000 + i) + "><P Class=" + name + ">line " +
            std::to_string(i) + "\n";
  }
  return "<SAMI><HEAD><STYLE><!--\n" + selectors +
         " {Name: Lang; lang: xx;}\n.First {Name: First;}\n--></STYLE></HEAD><BODY>\n" + body +
         "</BODY></SAMI>\n";
}

struct VobSubFiles {
  std::string sub;
  std::string idx;
};

// One text-like unit and count time stamps that all point at it.
inline VobSubFiles VobSubStampsAtOneUnit(int count) {
  SubStream sub;
  UnitSpec unit = BlockUnit(600, 80, 200);
  for (std::size_t y = 0; y < unit.rows.size(); ++y) {
    unit.rows[y] = {{static_cast<int32_t>(1 + y % 7), 0}, {250, 1}, {100, 2}, {250, 1}};
  }
  const int64_t at = sub.Add(unit);
  std::string idx = IndexHeader() + "id: en, index: 0\n";
  idx.reserve(idx.size() + static_cast<std::size_t>(count) * 48);
  for (int i = 0; i < count; ++i) idx += TimestampLine(1000 + i * 30, at);
  return {sub.bytes(), idx};
}

// A side x side unit (at most 4096) of vertical stripes of 255 pixels, alternately the
// palette's brightest and darkest grey, shown at stamps time stamps. Both fields read the
// same rows so that the picture fits the 64 KiB a unit can hold.
inline VobSubFiles VobSubLargeUnit(int32_t side, const std::string& options, int stamps = 1) {
  Row striped, full;
  for (int32_t x = 0; x + 255 <= side && x < 14 * 255; x += 255)
    striped.push_back({255, 1 + x / 255 % 2});
  striped.push_back({0, 0});  // end of row: the rest stays transparent
  for (int32_t x = 0; x < side; x += 255)
    full.push_back({std::min(255, side - x), 1 + x / 255 % 2});
  std::string field;
  for (int32_t y = 0; y + 1 < side / 2; ++y) field += EncodeRow(striped);
  field += EncodeRow(full);  // the last two rows reach the right edge
  const auto control = static_cast<uint32_t>(4 + field.size());
  // Colours: code 1 the brightest entry, code 2 the darkest; both opaque.
  std::string commands("\x03\x00\xF0\x04\x0F\xF0\x05", 7);
  const uint32_t last = static_cast<uint32_t>(side - 1);
  for (int i = 0; i < 2; ++i) {
    commands += {'\0', static_cast<char>(last >> 8), static_cast<char>(last & 0xFF)};
  }
  commands += '\x06';
  PutU16(commands, 4);
  PutU16(commands, 4);  // both fields at the same rows
  commands += "\x01\xFF";
  const auto second = static_cast<uint32_t>(control + 4 + commands.size());
  std::string body = field + std::string(2, '\0');
  PutU16(body, second);
  body += commands;
  PutU16(body, 300);
  PutU16(body, second);
  body += "\x02\xFF";
  std::string unit;
  PutU16(unit, static_cast<uint32_t>(4 + body.size()));
  PutU16(unit, control);
  unit += body;
  std::string sub;
  for (const std::string& pack : SplitUnit(unit)) sub += pack;
  std::string idx = IndexHeader(6, true, options) + "id: en, index: 0\n";
  for (int i = 0; i < stamps; ++i) idx += TimestampLine(1000 + i * 5000, 0);
  return {sub, idx};
}

// An 8-bit bitmap of width x height in horizontal bands of grey.
inline std::string BandedBitmap(int32_t width, int32_t height) {
  BmpLayout bmp;
  bmp.width = width;
  bmp.height = height;
  bmp.bits = 8;
  bmp.palette = GreyPalette(256);
  for (int32_t y = 0; y < height; ++y) {
    bmp.rows.emplace_back(static_cast<std::size_t>(width), static_cast<uint32_t>(y % 64 * 4));
  }
  return BuildBmp(bmp);
}

// A version 4 script of count picture events, one after another, all naming bitmap.
inline std::string SsaPictureEvents(int count, const std::string& bitmap) {
  std::string text = "[Script Info]\nScriptType: v4.00\n\n[Events]\n";
  for (int i = 0; i < count; ++i) {
    char times[64];
    const int start = i * 200;  // centiseconds
    std::snprintf(times, sizeof times, "%d:%02d:%02d.%02d,%d:%02d:%02d.%02d", start / 360000,
                  start / 6000 % 60, start / 100 % 60, start % 100, (start + 150) / 360000,
                  (start + 150) / 6000 % 60, (start + 150) / 100 % 60, (start + 150) % 100);
    text +=
        std::string("Picture: Marked=0,") + times + ",Default,,0000,0000,0000,," + bitmap + "\n";
  }
  return text;
}

// count time tags without a <clear/>, each adding one letter: every tag stores the text so far.
inline std::string RealTextWithoutClear(int count) {
  std::string text;
  text.reserve(static_cast<std::size_t>(count) * 20);
  for (int i = 0; i < count; ++i) text += "<time begin=" + std::to_string(i) + ">x";
  return text;
}

// count units in one pack each, each claiming more bytes than its pack holds, and a time
// stamp at each: every unit reads on to the end of the file looking for its next pack.
inline VobSubFiles VobSubUnitsWithoutTheirPacks(int count) {
  std::string unit;
  PutU16(unit, 0xFFFF);
  PutU16(unit, 0x100);
  unit += std::string(100, '\x11');
  std::string sub, idx = IndexHeader() + "id: en, index: 0\n";
  for (int i = 0; i < count; ++i) {
    idx += TimestampLine(1000 + i * 30, static_cast<int64_t>(sub.size()));
    sub += BuildPack(unit);
  }
  return {sub, idx};
}

// MicroDVD lines of groups frames, each frame named once per round, rounds times over, in
// falling order: many equal starts with many smaller ones between them.
inline std::string MicroDvdEqualStarts(int groups, int rounds) {
  std::string text;
  for (int r = 0; r < rounds; ++r) {
    for (int v = groups - 1; v >= 0; --v) text += "{" + std::to_string(v) + "}{}\n";
  }
  return text;
}

// count time tags from the last time down to the first, each followed by a line of text.
inline std::string RealTextReverseTimes(int count) {
  std::string text = "<window duration=\"99:00:00\">\n";
  for (int i = count; i > 0; --i) {
    text += "<time begin=\"" + std::to_string(i) + ".5\"/>line " + std::to_string(i) + "<br/>\n";
  }
  return text + "</window>\n";
}

}  // namespace korvalin::testing
