#include "subtitles/readers/vobsub_index.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "base/string_compare.h"
#include "subtitles/language_name.h"
#include "subtitles/line_reader.h"
#include "subtitles/time_scanners.h"
#include "video/color_tables.h"

namespace korvalin {

namespace {

constexpr char kSignature[] = "# VobSub index file, v";
constexpr std::size_t kSignatureLength = 22;
constexpr char kPaletteFormat[] = "%x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x";

// ".IFO" layout: the byte at 4111 gives the first program chain's offset below 256; its
// palette lies 4260 bytes on.
constexpr long kIfoChainOffsetAt = 4111;
constexpr long kIfoPaletteBase = 4260;

const ColorTables& Tables() {
  static const ColorTables tables;
  return tables;
}

uint8_t LumaOf(uint8_t r, uint8_t g, uint8_t b) {
  const ColorTables& t = Tables();
  const int32_t luma = std::min(t.RedToLuma(r) + t.GreenToLuma(g) + t.BlueToLuma(b), 255);
  return static_cast<uint8_t>(luma == 0 ? 1 : luma);
}

// The next line, stripped at both ends; false at the end of the index.
bool NextLine(StdFile& index, DynString& line) {
  if (ReadLineString(index, line) != 0) return false;
  line.TrimLeft();
  line.TrimRight();
  return true;
}

bool IsIgnored(const DynString& line) {
  return line.IsEmpty() || line.c_str()[0] == '#';
}

}  // namespace

int32_t ParseVobSubVersion(const char* firstLine) {
  if (!firstLine || std::strncmp(firstLine, kSignature, kSignatureLength) != 0) return -1;
  int version = 0;
  if (std::sscanf(firstLine + kSignatureLength, "%d", &version) != 1) return -1;
  return version < 0 ? -1 : version;
}

DynString VobSubKeyValue(const char* line, const char* key) {
  DynString decorated(" ");
  decorated.Append(line);
  decorated.Append(",");
  DynString pattern(" ");
  pattern.Append(key);
  pattern.Append(": ");
  const int at = decorated.Find(pattern.c_str());
  if (at < 0) return DynString("");
  const char* value = decorated.c_str() + at + pattern.Length();
  std::size_t length = 0;
  while (value[length] != ',' && static_cast<unsigned char>(value[length]) > 0x20) ++length;
  return DynString(value, length);
}

int ParseVobSubPalette(const char* line, LumaPalette& palette) {
  constexpr std::size_t kKeyLength = 9;  // "palette: "
  if (!line || std::strncmp(line, "palette: ", kKeyLength) != 0) return -1;
  unsigned int v[16] = {};
  const int n =
      std::sscanf(line + kKeyLength, kPaletteFormat, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5],
                  &v[6], &v[7], &v[8], &v[9], &v[10], &v[11], &v[12], &v[13], &v[14], &v[15]);
  if (n < 16) return -1;
  for (std::size_t i = 0; i < 16; ++i) {
    // The index stores it so: the low byte is taken as red, the third as blue.
    palette.luma[i] =
        LumaOf(static_cast<uint8_t>(v[i] & 0xFF), static_cast<uint8_t>((v[i] >> 8) & 0xFF),
               static_cast<uint8_t>((v[i] >> 16) & 0xFF));
  }
  palette.read = true;
  return 0;
}

int ReadIfoPalette(StdFile& ifo, LumaPalette& palette) {
  if (ifo.Seek(kIfoChainOffsetAt, SEEK_SET) != 0) return -1;
  uint8_t n = 0;
  if (ifo.Read(&n, 1, 1) != 1) return -1;
  if (ifo.Seek(kIfoPaletteBase + n, SEEK_SET) != 0) return -1;
  const ColorTables& t = Tables();
  for (std::size_t i = 0; i < 16; ++i) {
    uint8_t entry[4];  // unused, Y, Cb, Cr
    if (ifo.Read(entry, 1, 4) != 4) return -1;
    const int32_t y = entry[1], cb = entry[2], cr = entry[3];
    const int32_t l = 76309 * (y - 16);
    // Right shifts of negative values are arithmetic (C++20).
    const uint8_t r = t.Saturate((l + 104595 * cr - 13355392) >> 16);
    const uint8_t g = t.Saturate((l - 53281 * cr - 25625 * cb + 10132736) >> 16);
    const uint8_t b = t.Saturate((l + 132252 * cb - 16895488) >> 16);
    palette.luma[i] = LumaOf(r, g, b);
  }
  palette.read = true;
  return 0;
}

int ReadVobSubHeader(StdFile& index, VobSubHeader& header) {
  header.smooth = false;
  header.scale = 100;
  DynString line;
  while (NextLine(index, line)) {
    if (IsIgnored(line)) continue;
    const DynString id = VobSubKeyValue(line.c_str(), "id");
    if (!id.IsEmpty()) {
      header.streamNames.emplace_back(LanguageNameFromCode(id.c_str()));
      continue;
    }
    const DynString smooth = VobSubKeyValue(line.c_str(), "smooth");
    if (!smooth.IsEmpty()) {
      header.smooth = EqualsIgnoreCase(smooth.c_str(), "ON");
      continue;
    }
    const DynString scale = VobSubKeyValue(line.c_str(), "scale");
    if (!scale.IsEmpty()) {
      int value = header.scale;
      std::sscanf(scale.c_str(), "%d%%", &value);
      header.scale = value <= 0 ? 100 : value;
      continue;
    }
    if (header.palette.read) continue;
    // " palette: " at the start of " " + line + ",".
    if (std::strncmp(line.c_str(), "palette: ", 9) == 0 &&
        ParseVobSubPalette(line.c_str(), header.palette) != 0) {
      return -1;
    }
  }
  return 0;
}

int32_t ChooseVobSubStream(const std::vector<DynString>& names, const char* preferred) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (EqualsIgnoreCase(names[i].c_str(), preferred ? preferred : "")) {
      return static_cast<int32_t>(i);
    }
  }
  return 0;
}

int ReadVobSubStream(StdFile& index, const char* streamName,
                     std::vector<VobSubTimestamp>& timestamps) {
  const char* wanted = streamName ? streamName : "";
  int32_t delay = 0;
  bool inStream = false;
  DynString line;
  while (NextLine(index, line)) {
    if (IsIgnored(line)) continue;
    const DynString id = VobSubKeyValue(line.c_str(), "id");
    if (!id.IsEmpty()) {
      if (std::strcmp(LanguageNameFromCode(id.c_str()), wanted) == 0) {
        inStream = true;
        continue;
      }
      if (inStream) break;  // the chosen stream's block is over
      continue;
    }
    if (!inStream) continue;
    const DynString timestamp = VobSubKeyValue(line.c_str(), "timestamp");
    if (!timestamp.IsEmpty()) {
      const int32_t t = ScanColonMillisTime(timestamp.c_str());
      if (t == -1) return -1;
      const DynString filepos = VobSubKeyValue(line.c_str(), "filepos");
      uint64_t position = 0;
      if (filepos.IsEmpty() || std::sscanf(filepos.c_str(), "%" SCNx64, &position) != 1) {
        return -1;
      }
      // Wraps like 32-bit arithmetic would rather than overflow.
      const int32_t start =
          static_cast<int32_t>(static_cast<uint32_t>(t) + static_cast<uint32_t>(delay));
      timestamps.push_back({start, static_cast<int64_t>(position)});
      continue;
    }
    const DynString value = VobSubKeyValue(line.c_str(), "delay");
    if (!value.IsEmpty()) {
      const char* text = value.c_str();
      if (text[0] == '-') {
        delay = static_cast<int32_t>(0u - static_cast<uint32_t>(ScanColonMillisTime(text + 1)));
      } else if (text[0] == '+') {
        delay = ScanColonMillisTime(text + 1);
      } else {
        delay = ScanColonMillisTime(text);
      }
    }
  }
  return 0;
}

}  // namespace korvalin
