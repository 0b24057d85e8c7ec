#pragma once

#include "host/guid.h"

namespace korvalin::host {

// The published identifiers of major types, subtypes and format types.

inline constexpr GUID MEDIATYPE_Video = FourCCMap(0x73646976);  // "vids"
inline constexpr GUID MEDIATYPE_Audio = FourCCMap(0x73647561);  // "auds"
inline constexpr GUID MEDIATYPE_Text = FourCCMap(0x73747874);   // "txts"
inline constexpr GUID MEDIATYPE_Stream = MakeGuid("E436EB83-524F-11CE-9F53-0020AF0BA770");

inline constexpr GUID MEDIASUBTYPE_YUY2 = FourCCMap(0x32595559);  // "YUY2"
inline constexpr GUID MEDIASUBTYPE_RGB8 = MakeGuid("E436EB7A-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID MEDIASUBTYPE_RGB565 = MakeGuid("E436EB7B-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID MEDIASUBTYPE_RGB555 = MakeGuid("E436EB7C-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID MEDIASUBTYPE_RGB24 = MakeGuid("E436EB7D-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID MEDIASUBTYPE_RGB32 = MakeGuid("E436EB7E-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID MEDIASUBTYPE_PCM = FourCCMap(0x00000001);  // WAVE_FORMAT_PCM

inline constexpr GUID FORMAT_None = MakeGuid("0F6417D6-C318-11D0-A43F-00A0C9223196");
inline constexpr GUID FORMAT_VideoInfo = MakeGuid("05589F80-C356-11CE-BF01-00AA0055595A");
inline constexpr GUID FORMAT_VideoInfo2 = MakeGuid("F72A76A0-EB0A-11D0-ACE4-0000C0CC16BA");
inline constexpr GUID FORMAT_WaveFormatEx = MakeGuid("05589F81-C356-11CE-BF01-00AA0055595A");

}  // namespace korvalin::host
