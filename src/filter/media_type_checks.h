#pragma once

#include "host/hresult.h"
#include "host/media_type.h"

namespace korvalin {

// The input-type rule: packed 16-bit YUY2 in a VIDEOINFOHEADER, or in a VIDEOINFOHEADER2
// whose picture aspect is that of square pixels unless extended overlay compensates it.
// VFW_E_TYPE_NOT_ACCEPTED otherwise. The major type is not looked at.
host::HRESULT CheckInputType(const host::AM_MEDIA_TYPE& type, bool overlay);

// An input the rule accepts and an output of YUY2, RGB32 or RGB565 in the block the overlay
// mode asks for (VIDEOINFOHEADER2 with overlay, else VIDEOINFOHEADER), both blocks at least
// 88 bytes. The input's refusal, E_INVALIDARG for the blocks, E_FAIL for the subtype.
host::HRESULT CheckTransform(const host::AM_MEDIA_TYPE& input, const host::AM_MEDIA_TYPE& output,
                             bool overlay);

}  // namespace korvalin
