#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "host/format_blocks.h"
#include "host/guid.h"
#include "host/hresult.h"

namespace korvalin::host {

// A media type: what flows on a connection. The format block is a byte array owned by the
// type, so copying a type copies its block and nothing needs freeing by hand.
struct AM_MEDIA_TYPE {
  GUID majortype;
  GUID subtype;
  bool bFixedSizeSamples = true;
  bool bTemporalCompression = false;
  uint32_t lSampleSize = 0;
  GUID formattype;
  std::vector<uint8_t> format;

  uint32_t cbFormat() const { return static_cast<uint32_t>(format.size()); }
  const uint8_t* pbFormat() const { return format.empty() ? nullptr : format.data(); }
  uint8_t* pbFormat() { return format.empty() ? nullptr : format.data(); }
};

// A media type handed over on its own (a sample's attached type, an enumerated type).
using MediaTypePtr = std::unique_ptr<AM_MEDIA_TYPE>;

// Copies src into *target. E_POINTER for a null target, E_OUTOFMEMORY when the block
// cannot be allocated (target then has no block).
HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE& src);
// Drops the format block; the GUIDs stay.
void FreeMediaType(AM_MEDIA_TYPE& type);
// A copy on the heap; empty when memory runs out.
MediaTypePtr CreateMediaType(const AM_MEDIA_TYPE& src);

// Whether `type` matches `partial`, where GUID_NULL fields of partial match anything.
bool MatchesPartialType(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE& partial);
// Two types describe the same stream: GUIDs and format block equal.
bool MediaTypesEqual(const AM_MEDIA_TYPE& a, const AM_MEDIA_TYPE& b);

// Reads the leading block of the type's format bytes; false when the block is too short.
template <class Block>
bool ReadFormatBlock(const AM_MEDIA_TYPE& type, Block* block) {
  if (type.format.size() < FormatBlockSize<Block>) return false;
  *block = Block{};
  std::memcpy(static_cast<void*>(block), type.format.data(), FormatBlockSize<Block>);
  return true;
}

// Replaces the type's format bytes with `block` followed by `extraBytes` zero bytes.
template <class Block>
void SetFormatBlock(AM_MEDIA_TYPE* type, const Block& block, std::size_t extraBytes = 0) {
  type->format.assign(FormatBlockSize<Block> + extraBytes, 0);
  std::memcpy(type->format.data(), &block, FormatBlockSize<Block>);
}

// Turns a FORMAT_VideoInfo type into FORMAT_VideoInfo2 with the same fields, a picture
// aspect of |biWidth| : |biHeight| as they stand (not reduced), and the bytes following the
// header (masks, palette) carried over. E_INVALIDARG for any other type.
HRESULT ConvertVideoInfoToVideoInfo2(AM_MEDIA_TYPE* type);

}  // namespace korvalin::host
