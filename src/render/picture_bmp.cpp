// LoadBitmapFile of Part 6.4: uncompressed bottom-up Windows BMP files, 24, 8, 4 and 1 bits
// per pixel, read as luma. Every read is checked against the bytes the file holds; the
// pixel buffer is only allocated once the file is known to hold all its rows.
#include <algorithm>
#include <cstdio>
#include <memory>

#include "render/picture.h"
#include "video/color_tables.h"

namespace korvalin {

namespace {

constexpr std::size_t kFileHeaderSize = 14;
constexpr std::size_t kInfoHeaderSize = 40;
constexpr uint16_t kBitmapType = 19778;  // "BM"
// Largest file read: enough for the largest picture at 24 bits with its headers.
constexpr long kMaxFileBytes = 256L * 1024 * 1024;

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

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

}  // namespace

int Picture::LoadBitmapBytes(const uint8_t* data, std::size_t size) {
  FreePixels();
  if (data == nullptr || size < kFileHeaderSize + kInfoHeaderSize) return -1;
  if (U16(data) != kBitmapType) return -1;
  const uint32_t dataOffset = U32(data + 10);
  const uint8_t* info = data + kFileHeaderSize;
  const int32_t w = static_cast<int32_t>(U32(info + 4));
  const int32_t h = static_cast<int32_t>(U32(info + 8));
  const uint16_t bits = U16(info + 14);
  const uint32_t compression = U32(info + 16);
  // Compressed and top-down (negative height) files are refused, as are empty and absurd
  // sizes.
  if (compression != 0) return -1;
  if (w < 1 || h < 1 || w > kMaxSide || h > kMaxSide) return -1;
  if (static_cast<int64_t>(w) * h > kMaxPixels) return -1;

  std::size_t paletteEntries = 0;
  switch (bits) {
    case 24:
      paletteEntries = 0;
      break;
    case 8:
      paletteEntries = 256;
      break;
    case 4:
      paletteEntries = 16;
      break;
    case 1:
      paletteEntries = 2;
      break;
    default:
      return -1;
  }
  const std::size_t paletteStart = kFileHeaderSize + kInfoHeaderSize;
  if (size - paletteStart < paletteEntries * 4) return -1;
  std::array<uint8_t, 256> paletteLuma{};
  for (std::size_t i = 0; i < paletteEntries; ++i) {
    const uint8_t* e = data + paletteStart + i * 4;  // blue, green, red, unused
    paletteLuma[i] = Luma(e[2], e[1], e[0]);
  }

  const std::size_t uw = static_cast<std::size_t>(w);
  std::size_t rowBytes = 0;
  switch (bits) {
    case 24:
      rowBytes = uw * 3;
      break;
    case 8:
      rowBytes = uw;
      break;
    case 4:
      rowBytes = (uw + 1) / 2;
      break;
    default:
      rowBytes = (uw + 7) / 8;
      break;
  }
  const std::size_t stride = (rowBytes + 3) / 4 * 4;
  const std::size_t uh = static_cast<std::size_t>(h);
  // The last row need not carry its padding: the reader stops at the end of the data.
  const std::size_t needed = stride * (uh - 1) + rowBytes;
  if (dataOffset > size || size - dataOffset < needed) return -1;

  std::vector<uint8_t> out(uw * uh);
  for (std::size_t fileRow = 0; fileRow < uh; ++fileRow) {
    const uint8_t* src = data + dataOffset + fileRow * stride;
    uint8_t* dst = out.data() + (uh - 1 - fileRow) * uw;  // bottom-up
    for (std::size_t x = 0; x < uw; ++x) {
      switch (bits) {
        case 24:
          dst[x] = Luma(src[x * 3 + 2], src[x * 3 + 1], src[x * 3]);
          break;
        case 8:
          dst[x] = paletteLuma[src[x]];
          break;
        case 4: {
          const uint8_t byte = src[x / 2];
          dst[x] = paletteLuma[(x % 2 == 0) ? (byte >> 4) : (byte & 0x0F)];
          break;
        }
        default: {
          const uint8_t byte = src[x / 8];
          dst[x] = paletteLuma[(byte >> (7 - x % 8)) & 1];
          break;
        }
      }
    }
  }
  pixels.swap(out);
  width = w;
  height = h;
  return 0;
}

int Picture::LoadBitmapFile(const char* name) {
  FreePixels();
  if (name == nullptr || name[0] == '\0') return -1;
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(name, "rb"));
  if (!file) return -1;
  if (std::fseek(file.get(), 0, SEEK_END) != 0) return -1;
  const long fileSize = std::ftell(file.get());
  if (fileSize < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) return -1;
  // The headers tell how much of the file is needed; read no more than that, and never
  // more than the file holds.
  uint8_t head[kFileHeaderSize + kInfoHeaderSize];
  if (std::fread(head, 1, sizeof head, file.get()) != sizeof head) return -1;
  const long wanted = std::min(fileSize, kMaxFileBytes);
  if (wanted < static_cast<long>(sizeof head)) return -1;
  std::vector<uint8_t> bytes(static_cast<std::size_t>(wanted));
  std::copy(head, head + sizeof head, bytes.begin());
  const std::size_t rest = bytes.size() - sizeof head;
  if (std::fread(bytes.data() + sizeof head, 1, rest, file.get()) != rest) return -1;
  return LoadBitmapBytes(bytes.data(), bytes.size());
}

}  // namespace korvalin
