#pragma once

#include "host/hresult.h"
#include "host/media_type.h"
#include "video/video_format.h"

namespace korvalin {

// The common description of a media type's video format block. A VIDEOINFOHEADER gives
// square pixels (picture aspect = biWidth : biHeight); any other format type is read as a
// VIDEOINFOHEADER2. A block shorter than its header reads as all zeros.
VideoFormat ToVideoFormat(const host::AM_MEDIA_TYPE& type);

// Asks for rows stored top-down: biHeight = -|biHeight| in a VIDEOINFOHEADER or
// VIDEOINFOHEADER2 block. E_FAIL for any other format type or a block too short.
host::HRESULT MakeTopDown(host::AM_MEDIA_TYPE* type);

// The pixel format of a video subtype the filter writes, false for any other.
bool OutputPixelFormat(const host::GUID& subtype, PixelFormat* format);

}  // namespace korvalin
