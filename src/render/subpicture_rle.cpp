// The second half of ReadSubpicture: the control commands of an assembled unit and
// its interlaced run-length-coded pixel data. Every read is checked against the unit's
// size and every write against the picture's.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <vector>

#include "render/subpicture_decoder.h"

namespace korvalin {

namespace {

constexpr double kDelayUnitMs = 11.377777777777778;  // 1024 / 90

struct DisplayControl {
  uint8_t colour[4] = {0, 0, 0, 0};
  uint8_t contrast[4] = {0, 0, 0, 0};
  int32_t width = 0;
  int32_t height = 0;
  int64_t fieldOffset[2] = {0, 0};  // buffer positions of the top and bottom fields
};

// Runs the control commands from buffer position start. Returns 0, or -1 on an unknown
// command. A command whose operands run past the unit's end ends the reading.
int ReadControl(const uint8_t* unit, std::size_t size, std::size_t start, DisplayControl& ctl,
                int32_t& duration) {
  std::size_t pos = start;
  auto has = [&](std::size_t n) { return size - pos >= n; };  // pos <= size holds throughout
  while (pos < size) {
    const uint8_t command = unit[pos++];
    switch (command) {
      case 0x00:  // forced display
      case 0x01:  // start display
        break;
      case 0x02:  // stop display
        return 0;
      case 0x03:    // set colour
      case 0x04: {  // set contrast
        if (!has(2)) return 0;
        uint8_t* target = command == 0x03 ? ctl.colour : ctl.contrast;
        target[3] = static_cast<uint8_t>(unit[pos] >> 4);
        target[2] = static_cast<uint8_t>(unit[pos] & 15);
        target[1] = static_cast<uint8_t>(unit[pos + 1] >> 4);
        target[0] = static_cast<uint8_t>(unit[pos + 1] & 15);
        pos += 2;
        break;
      }
      case 0x05: {  // set display area
        if (!has(6)) return 0;
        const uint8_t* b = unit + pos;
        const int32_t x1 = b[0] * 16 + (b[1] >> 4);
        const int32_t x2 = (b[1] & 15) * 256 + b[2];
        const int32_t y1 = b[3] * 16 + (b[4] >> 4);
        const int32_t y2 = (b[4] & 15) * 256 + b[5];
        ctl.width = x2 - x1 + 1;
        ctl.height = y2 - y1 + 1;
        pos += 6;
        break;
      }
      case 0x06: {  // set pixel data addresses
        if (!has(4)) return 0;
        ctl.fieldOffset[0] = ((unit[pos] << 8) | unit[pos + 1]) - 4;
        ctl.fieldOffset[1] = ((unit[pos + 2] << 8) | unit[pos + 3]) - 4;
        pos += 4;
        break;
      }
      case 0xFF:  // end of sequence: the next one's delay, then its commands
        if (size >= 4 && pos < size - 4) {
          const int32_t delay = (unit[pos] << 8) | unit[pos + 1];
          duration = static_cast<int32_t>(delay * kDelayUnitMs);
        }
        if (!has(4)) return 0;
        pos += 4;
        break;
      default:
        return -1;
    }
  }
  return 0;
}

// Reads the nibbles of one field.
class NibbleReader {
 public:
  NibbleReader(const uint8_t* unit, std::size_t size, int64_t bytePosition)
      : unit_(unit), size_(size), nibble_(bytePosition * 2) {}

  int64_t BytePosition() const { return nibble_ / 2; }
  // False when the nibble would lie outside the unit.
  bool Next(uint32_t& value) {
    const int64_t byte = nibble_ / 2;
    if (byte < 0 || byte >= static_cast<int64_t>(size_)) return false;
    const uint8_t b = unit_[static_cast<std::size_t>(byte)];
    value = (nibble_ % 2 == 0) ? static_cast<uint32_t>(b >> 4) : static_cast<uint32_t>(b & 15);
    ++nibble_;
    return true;
  }
  void AlignToByte() { nibble_ += nibble_ % 2; }

 private:
  const uint8_t* unit_;
  std::size_t size_;
  int64_t nibble_;
};

enum class Code { Run, EndOfRow, OutOfData };

// One run-length code into code; OutOfData when the unit ends inside it.
Code ReadCode(NibbleReader& reader, uint32_t& code) {
  uint32_t nibble = 0;
  if (!reader.Next(nibble)) return Code::OutOfData;
  code = nibble;
  for (uint32_t limit : {0x4u, 0x10u, 0x40u}) {
    if (code >= limit) return Code::Run;
    if (!reader.Next(nibble)) return Code::OutOfData;
    code = (code << 4) | nibble;
  }
  return code >= 0x100 ? Code::Run : Code::EndOfRow;
}

// Walks the interlaced rows of the pixel data and hands every visible run to
// onRun(y, x, length, luma); transparent runs are only stepped over. The work follows the
// codes read, whatever the width and height.
template <typename OnRun>
void WalkVisibleRuns(const uint8_t* unit, std::size_t size, int64_t controlPosition,
                     const DisplayControl& ctl, const LumaPalette& palette, OnRun onRun) {
  uint8_t value[4];
  for (int p = 0; p < 4; ++p) value[p] = ctl.contrast[p] > 3 ? palette.luma[ctl.colour[p]] : 0;
  NibbleReader fields[2] = {NibbleReader(unit, size, ctl.fieldOffset[0]),
                            NibbleReader(unit, size, ctl.fieldOffset[1])};
  const int32_t width = ctl.width;
  for (int32_t y = 0; y < ctl.height; ++y) {
    NibbleReader& reader = fields[y & 1];
    int32_t x = 0;
    while (x < width) {
      if (fields[0].BytePosition() >= controlPosition ||
          fields[1].BytePosition() >= controlPosition) {
        return;
      }
      uint32_t code = 0;
      const Code kind = ReadCode(reader, code);
      if (kind == Code::OutOfData) return;
      if (kind == Code::EndOfRow) break;  // the rest of the row stays transparent
      const int32_t run =
          static_cast<int32_t>(std::min<uint32_t>(code >> 2, static_cast<uint32_t>(width - x)));
      const uint8_t v = value[code & 3];
      if (v != 0 && run > 0) onRun(y, x, run, v);
      x += run;
    }
    reader.AlignToByte();
  }
}

struct VisibleRun {
  int32_t y, x, length;
  uint8_t luma;
};

// The smallest rectangle holding every visible run; right < 0 when there is none.
struct VisibleBounds {
  int32_t left = INT32_MAX, right = -1, top = INT32_MAX, bottom = -1;
};

VisibleBounds BoundsOf(const std::vector<VisibleRun>& runs) {
  VisibleBounds b;
  for (const VisibleRun& run : runs) {
    b.left = std::min(b.left, run.x);
    b.right = std::max(b.right, run.x + run.length - 1);
    b.top = std::min(b.top, run.y);
    b.bottom = std::max(b.bottom, run.y);
  }
  return b;
}

}  // namespace

int DecodeSubpictureUnit(const uint8_t* unit, std::size_t size, uint32_t controlOffset,
                         const LumaPalette& palette, Picture& picture, int32_t& duration,
                         SubpictureArea area) {
  picture.FreePixels();
  // The control offset is used as a buffer position: the commands start
  // there (the first command of the first sequence, after its delay and next offset), and
  // pixel decoding stops when a field's read position reaches it.
  const std::size_t controlPosition = controlOffset;
  DisplayControl ctl;
  if (controlPosition < size && ReadControl(unit, size, controlPosition, ctl, duration) != 0) {
    return -1;
  }
  // A display area whose end lies before its start leaves the picture empty.
  if (ctl.width < 1 || ctl.height < 1) return 0;
  // The runs are gathered first (at most four per byte of the unit: two per field), so that
  // only the rectangle they cover is ever made.
  std::vector<VisibleRun> runs;
  WalkVisibleRuns(unit, size, static_cast<int64_t>(controlPosition), ctl, palette,
                  [&runs](int32_t y, int32_t x, int32_t length, uint8_t luma) {
                    runs.push_back({y, x, length, luma});
                  });
  VisibleBounds b{0, ctl.width - 1, 0, ctl.height - 1};
  if (area == SubpictureArea::kVisible) {
    b = BoundsOf(runs);
    if (b.right < 0) return 0;  // nothing visible: an empty picture, as cropping gives
  }
  picture = Picture(b.right - b.left + 1, b.bottom - b.top + 1);
  const auto stride = static_cast<std::size_t>(picture.width);
  for (const VisibleRun& run : runs) {  // each inside b
    uint8_t* row = picture.pixels.data() + static_cast<std::size_t>(run.y - b.top) * stride +
                   static_cast<std::size_t>(run.x - b.left);
    std::fill(row, row + run.length, run.luma);
  }
  return 0;
}

}  // namespace korvalin
