// LoadBitmapFile: uncompressed bottom-up Windows BMP files, 24, 8, 4 and 1 bits
// per pixel, read as luma. The headers are checked first; only then is the part of the file
// they describe read, and only when the file holds all of it, so no allocation is ever
// larger than what the file backs.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "render/picture.h"
#include "video/color_tables.h"

namespace korvalin {

namespace {

constexpr std::size_t kFileHeaderSize = 14;
constexpr std::size_t kInfoHeaderSize = 40;
constexpr std::size_t kHeadersSize = kFileHeaderSize + kInfoHeaderSize;
constexpr uint16_t kBitmapType = 19778;  // "BM"

uint16_t U16(const uint8_t* p) {
  return static_cast<uint16_t>(p[0] | (p[1] << 8));
}
uint32_t U32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
         (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

const ColorTables& Tables() {
  static const ColorTables tables;
  return tables;
}

uint8_t Luma(uint8_t r, uint8_t g, uint8_t b) {
  const ColorTables& t = Tables();
  const int32_t luma = t.RedToLuma(r) + t.GreenToLuma(g) + t.BlueToLuma(b);
  return static_cast<uint8_t>(std::min(luma, 255));
}

// What the two headers say, once they passed every check.
struct BmpLayout {
  int32_t width = 0;
  int32_t height = 0;
  uint16_t bits = 0;
  std::size_t paletteEntries = 0;  // right after the information header
  std::size_t dataOffset = 0;
  std::size_t rowBytes = 0;  // pixel bytes of a row
  std::size_t stride = 0;    // rowBytes padded to a multiple of 4
  // Bytes from the file's start the picture needs: headers, palette and every row (the
  // last row's padding not included, as the reader stops at its last pixel byte).
  std::size_t needed = 0;
};

// Checks the first kHeadersSize bytes; false for a wrong type, an unsupported bit count,
// a compressed or top-down file, or an empty or absurd size.
bool ReadLayout(const uint8_t* head, BmpLayout& layout) {
  if (U16(head) != kBitmapType) return false;
  const uint8_t* info = head + kFileHeaderSize;
  layout.dataOffset = U32(head + 10);
  layout.width = static_cast<int32_t>(U32(info + 4));
  layout.height = static_cast<int32_t>(U32(info + 8));
  layout.bits = U16(info + 14);
  if (U32(info + 16) != 0) return false;  // compressed
  const int32_t w = layout.width, h = layout.height;
  if (w < 1 || h < 1 || w > Picture::kMaxSide || h > Picture::kMaxSide) return false;
  if (static_cast<int64_t>(w) * h > Picture::kMaxPixels) return false;
  const std::size_t uw = static_cast<std::size_t>(w);
  switch (layout.bits) {
    case 24:
      layout.paletteEntries = 0;
      layout.rowBytes = uw * 3;
      break;
    case 8:
      layout.paletteEntries = 256;
      layout.rowBytes = uw;
      break;
    case 4:
      layout.paletteEntries = 16;
      layout.rowBytes = (uw + 1) / 2;
      break;
    case 1:
      layout.paletteEntries = 2;
      layout.rowBytes = (uw + 7) / 8;
      break;
    default:
      return false;
  }
  layout.stride = (layout.rowBytes + 3) / 4 * 4;
  const std::size_t paletteEnd = kHeadersSize + layout.paletteEntries * 4;
  const std::size_t dataEnd =
      layout.dataOffset + layout.stride * (static_cast<std::size_t>(h) - 1) + layout.rowBytes;
  layout.needed = std::max(paletteEnd, dataEnd);
  return true;
}

using PaletteLuma = std::array<uint8_t, 256>;

// The luma of each palette entry; entries lies right after the information header.
PaletteLuma PaletteLumaOf(const uint8_t* entries, const BmpLayout& layout) {
  PaletteLuma luma{};
  for (std::size_t i = 0; i < layout.paletteEntries; ++i) {
    const uint8_t* e = entries + i * 4;  // blue, green, red, unused
    luma[i] = Luma(e[2], e[1], e[0]);
  }
  return luma;
}

// One row of the file (layout.rowBytes bytes at src) into width luma bytes at dst.
void DecodeRow(const uint8_t* src, const BmpLayout& layout, const PaletteLuma& palette,
               uint8_t* dst) {
  const std::size_t uw = static_cast<std::size_t>(layout.width);
  switch (layout.bits) {
    case 24:
      for (std::size_t x = 0; x < uw; ++x)
        dst[x] = Luma(src[x * 3 + 2], src[x * 3 + 1], src[x * 3]);
      break;
    case 8:
      for (std::size_t x = 0; x < uw; ++x) dst[x] = palette[src[x]];
      break;
    case 4:
      for (std::size_t x = 0; x < uw; ++x) {
        const uint8_t byte = src[x / 2];
        dst[x] = palette[(x % 2 == 0) ? (byte >> 4) : (byte & 0x0F)];
      }
      break;
    default:
      for (std::size_t x = 0; x < uw; ++x) dst[x] = palette[(src[x / 8] >> (7 - x % 8)) & 1];
      break;
  }
}

// The picture's rows from the file's rows, which are stored bottom-up; readRow(fileRow, out)
// gives the layout.rowBytes bytes of a row and may fail.
template <typename ReadRow>
bool DecodeRows(const BmpLayout& layout, const PaletteLuma& palette, ReadRow readRow,
                std::vector<uint8_t>& out) {
  const std::size_t uw = static_cast<std::size_t>(layout.width);
  const std::size_t uh = static_cast<std::size_t>(layout.height);
  out.assign(uw * uh, 0);
  for (std::size_t fileRow = 0; fileRow < uh; ++fileRow) {
    const uint8_t* src = readRow(fileRow);
    if (!src) return false;
    DecodeRow(src, layout, palette, out.data() + (uh - 1 - fileRow) * uw);
  }
  return true;
}

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

}  // namespace

int Picture::LoadBitmapBytes(const uint8_t* data, std::size_t size) {
  FreePixels();
  BmpLayout layout;
  if (data == nullptr || size < kHeadersSize || !ReadLayout(data, layout)) return -1;
  if (size < layout.needed) return -1;
  const PaletteLuma palette = PaletteLumaOf(data + kHeadersSize, layout);
  DecodeRows(
      layout, palette,
      [&](std::size_t row) { return data + layout.dataOffset + row * layout.stride; }, pixels);
  width = layout.width;
  height = layout.height;
  return 0;
}

// Rows are read one at a time, so that loading never holds more than the picture and a row.
int Picture::LoadBitmapFile(const char* name) {
  FreePixels();
  if (name == nullptr || name[0] == '\0') return -1;
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(name, "rb"));
  if (!file) return -1;
  uint8_t head[kHeadersSize];
  if (std::fread(head, 1, sizeof head, file.get()) != sizeof head) return -1;
  BmpLayout layout;
  if (!ReadLayout(head, layout)) return -1;
  // The file must hold everything the headers describe before anything is allocated.
  if (std::fseek(file.get(), 0, SEEK_END) != 0) return -1;
  const long fileSize = std::ftell(file.get());
  if (fileSize < 0 || static_cast<unsigned long>(fileSize) < layout.needed) return -1;
  std::vector<uint8_t> entries(layout.paletteEntries * 4);
  if (std::fseek(file.get(), static_cast<long>(sizeof head), SEEK_SET) != 0 ||
      std::fread(entries.data(), 1, entries.size(), file.get()) != entries.size() ||
      std::fseek(file.get(), static_cast<long>(layout.dataOffset), SEEK_SET) != 0) {
    return -1;
  }
  std::vector<uint8_t> row(layout.stride);
  const auto readRow = [&](std::size_t fileRow) -> const uint8_t* {
    // The last row's padding need not be in the file.
    const bool last = fileRow + 1 == static_cast<std::size_t>(layout.height);
    const std::size_t bytes = last ? layout.rowBytes : layout.stride;
    return std::fread(row.data(), 1, bytes, file.get()) == bytes ? row.data() : nullptr;
  };
  std::vector<uint8_t> decoded;
  if (!DecodeRows(layout, PaletteLumaOf(entries.data(), layout), readRow, decoded)) return -1;
  pixels = std::move(decoded);
  width = layout.width;
  height = layout.height;
  return 0;
}

}  // namespace korvalin
