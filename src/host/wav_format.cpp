#include "host/wav_format.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "host/media_guids.h"

namespace korvalin::host {
namespace {

constexpr uint16_t kWaveFormatExtensible = 0xFFFE;
constexpr std::size_t kChunkHeader = 8;
constexpr std::size_t kPcmFmtBytes = 16;
constexpr std::size_t kExtensibleFmtBytes = 40;
// KSDATAFORMAT_SUBTYPE_PCM, as its bytes lie in the file.
constexpr uint8_t kPcmSubformat[16] = {0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                       0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

uint16_t Read16(const uint8_t* p) {
  return static_cast<uint16_t>(p[0] | p[1] << 8);
}
uint32_t Read32(const uint8_t* p) {
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}
void Write16(uint8_t* p, uint16_t value) {
  p[0] = static_cast<uint8_t>(value);
  p[1] = static_cast<uint8_t>(value >> 8);
}
void Write32(uint8_t* p, uint32_t value) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(value >> (8 * i));
}
bool IdIs(const uint8_t* p, std::string_view id) {
  return std::memcmp(p, id.data(), 4) == 0;
}

// The format of a "fmt " chunk's body, or an error.
std::string ReadFmtChunk(std::span<const uint8_t> body, WAVEFORMATEX* format) {
  if (body.size() < kPcmFmtBytes) return "fmt chunk too short";
  const uint8_t* p = body.data();
  *format = WAVEFORMATEX{};
  format->wFormatTag = Read16(p);
  format->nChannels = Read16(p + 2);
  format->nSamplesPerSec = Read32(p + 4);
  format->nAvgBytesPerSec = Read32(p + 8);
  format->nBlockAlign = Read16(p + 12);
  format->wBitsPerSample = Read16(p + 14);
  if (format->wFormatTag == kWaveFormatExtensible) {
    if (body.size() < kExtensibleFmtBytes || Read16(p + 16) < 22 ||
        std::memcmp(p + 24, kPcmSubformat, sizeof kPcmSubformat) != 0) {
      return "not PCM audio";
    }
    format->wFormatTag = WAVE_FORMAT_PCM;
  }
  if (format->wFormatTag != WAVE_FORMAT_PCM) return "not PCM audio";
  format->nAvgBytesPerSec = format->nSamplesPerSec * format->nBlockAlign;
  return IsPlainPcm(*format) ? "" : "unsupported PCM format";
}

}  // namespace

bool IsPlainPcm(const WAVEFORMATEX& format) {
  const uint16_t bits = format.wBitsPerSample;
  return format.wFormatTag == WAVE_FORMAT_PCM && format.nChannels > 0 &&
         format.nSamplesPerSec > 0 && bits >= 8 && bits <= 32 && bits % 8 == 0 &&
         format.nBlockAlign == uint32_t{format.nChannels} * bits / 8 &&
         uint64_t{format.nSamplesPerSec} * format.nBlockAlign <= UINT32_MAX;
}

WavParse ParseWavHeader(std::span<const uint8_t> head, uint64_t fileSize) {
  WavParse result;
  if (head.size() < 12 || !IdIs(head.data(), "RIFF") || !IdIs(head.data() + 8, "WAVE")) {
    result.error = "not a RIFF/WAVE file";
    return result;
  }
  bool haveFormat = false;
  // The RIFF size is often wrong in streamed files; the chunks are walked up to the data.
  for (uint64_t at = 12; at + kChunkHeader <= head.size();) {
    const uint8_t* chunk = head.data() + at;
    const uint64_t size = Read32(chunk + 4);
    const uint64_t body = at + kChunkHeader;
    if (IdIs(chunk, "fmt ")) {
      if (body + size > head.size()) {
        result.error = "truncated fmt chunk";
        return result;
      }
      result.error = ReadFmtChunk(head.subspan(body, size), &result.layout.format);
      if (!result.error.empty()) return result;
      haveFormat = true;
    } else if (IdIs(chunk, "data")) {
      if (!haveFormat) {
        result.error = "data chunk before fmt chunk";
        return result;
      }
      const uint64_t available = fileSize > body ? fileSize - body : 0;
      const uint64_t block = result.layout.format.nBlockAlign;
      result.layout.dataOffset = body;
      result.layout.dataBytes = std::min(size, available) / block * block;
      return result;
    }
    at = body + size + (size & 1);  // chunks are padded to even sizes
  }
  result.error = haveFormat ? "no data chunk" : "no fmt chunk";
  return result;
}

std::array<uint8_t, kWavHeaderBytes> WavHeaderBytes(const WAVEFORMATEX& format,
                                                    uint32_t dataBytes) {
  std::array<uint8_t, kWavHeaderBytes> header{};
  uint8_t* p = header.data();
  const uint64_t riffSize = uint64_t{kWavHeaderBytes - 8} + dataBytes + (dataBytes & 1);
  std::memcpy(p, "RIFF", 4);
  Write32(p + 4, static_cast<uint32_t>(std::min<uint64_t>(riffSize, UINT32_MAX)));
  std::memcpy(p + 8, "WAVEfmt ", 8);
  Write32(p + 16, kPcmFmtBytes);
  Write16(p + 20, format.wFormatTag);
  Write16(p + 22, format.nChannels);
  Write32(p + 24, format.nSamplesPerSec);
  Write32(p + 28, format.nAvgBytesPerSec);
  Write16(p + 32, format.nBlockAlign);
  Write16(p + 34, format.wBitsPerSample);
  std::memcpy(p + 36, "data", 4);
  Write32(p + 40, dataBytes);
  return header;
}

AM_MEDIA_TYPE PcmMediaType(const WAVEFORMATEX& format) {
  AM_MEDIA_TYPE type;
  type.majortype = MEDIATYPE_Audio;
  type.subtype = MEDIASUBTYPE_PCM;
  type.formattype = FORMAT_WaveFormatEx;
  type.bFixedSizeSamples = true;
  type.lSampleSize = format.nBlockAlign;
  SetFormatBlock(&type, format);
  return type;
}

}  // namespace korvalin::host
