#pragma once

#include "filter/picture_geometry.h"
#include "host/hresult.h"
#include "host/media_type.h"

namespace korvalin {

// The output type offered at `position` for a connected input: 0 YUY2, 1 RGB32, 2 RGB565,
// sized by the geometry. With extended overlay only YUY2 is offered, as a VIDEOINFOHEADER2
// whose picture aspect carries the compensated height. E_INVALIDARG below 0,
// VFW_S_NO_MORE_ITEMS past the last.
host::HRESULT OfferOutputType(int position, const host::AM_MEDIA_TYPE& input,
                              const PictureGeometry& geometry, bool overlay,
                              host::AM_MEDIA_TYPE* type);

}  // namespace korvalin
