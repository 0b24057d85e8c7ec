#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "host/format_blocks.h"
#include "host/media_type.h"

namespace korvalin::host {

// Where the sound of a WAV file is: its format and the bytes of its data chunk.
struct WavLayout {
  WAVEFORMATEX format;  // always plain PCM (an extensible PCM header is reduced to it)
  uint64_t dataOffset = 0;
  uint64_t dataBytes = 0;  // whole sample frames, within the file
};

struct WavParse {
  WavLayout layout;
  std::string error;  // "" when the layout is valid
};

inline constexpr std::size_t kWavHeaderBytes = 44;

// Whether `format` is integer PCM this system plays: tag 1, 8 to 32 bits in whole bytes,
// a block of one sample per channel and a byte rate that fits 32 bits.
bool IsPlainPcm(const WAVEFORMATEX& format);

// Reads the RIFF/WAVE header from `head`, the first bytes of a file of `fileSize` bytes: the
// "fmt " chunk, then the "data" chunk, whose header must lie within `head`. A data size
// reaching past the end of the file stops at it.
WavParse ParseWavHeader(std::span<const uint8_t> head, uint64_t fileSize);
inline WavParse ParseWavHeader(std::span<const uint8_t> file) {
  return ParseWavHeader(file, file.size());
}

// The canonical header (RIFF, a 16-byte "fmt " chunk, the "data" chunk header) of
// `dataBytes` bytes of `format`. The RIFF size counts the pad byte an odd data chunk takes,
// and stops at the 32-bit maximum.
std::array<uint8_t, kWavHeaderBytes> WavHeaderBytes(const WAVEFORMATEX& format, uint32_t dataBytes);

// MEDIATYPE_Audio / MEDIASUBTYPE_PCM / FORMAT_WaveFormatEx carrying `format`.
AM_MEDIA_TYPE PcmMediaType(const WAVEFORMATEX& format);

}  // namespace korvalin::host
