#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "host/wav_format.h"

namespace korvalin::host::testing {

inline WAVEFORMATEX PcmFormat(uint32_t samplesPerSec, uint16_t channels = 2, uint16_t bits = 16) {
  WAVEFORMATEX format;
  format.wFormatTag = WAVE_FORMAT_PCM;
  format.nChannels = channels;
  format.nSamplesPerSec = samplesPerSec;
  format.nBlockAlign = static_cast<uint16_t>(channels * bits / 8);
  format.nAvgBytesPerSec = samplesPerSec * format.nBlockAlign;
  format.wBitsPerSample = bits;
  return format;
}

// A canonical WAV file of `format` holding `data`, then `trailer` after the data chunk.
inline std::string WavFileBytes(const WAVEFORMATEX& format, const std::string& data,
                                const std::string& trailer = "") {
  const auto header = WavHeaderBytes(format, static_cast<uint32_t>(data.size()));
  return std::string(header.begin(), header.end()) + data + trailer;
}

// `bytes` bytes counting up from `first`, so that any lost or moved byte shows.
inline std::string CountingBytes(std::size_t bytes, int first = 0) {
  std::string data(bytes, '\0');
  for (std::size_t i = 0; i < bytes; ++i) data[i] = static_cast<char>(first + i * 7);
  return data;
}

inline std::string ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline WavParse ParseWavString(const std::string& bytes) {
  return ParseWavHeader(std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
}

}  // namespace korvalin::host::testing
