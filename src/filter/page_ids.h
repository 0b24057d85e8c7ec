#pragma once

#include "host/guid.h"

namespace korvalin {

// The filter's four property pages, in tab order: Picture, Subtitles, OSD, Help/About.
inline constexpr host::CLSID CLSID_PicturePage =
    host::MakeGuid("37D5AC6C-DB82-4D83-8A70-B8FF0F1CB7C9");
inline constexpr host::CLSID CLSID_SubtitlePage =
    host::MakeGuid("EB080B36-848F-4B75-B0C3-59B12D21F00D");
inline constexpr host::CLSID CLSID_OsdPage = host::MakeGuid("F130D39A-3AD8-42E1-A905-54625636AB6A");
inline constexpr host::CLSID CLSID_AboutPage =
    host::MakeGuid("A4466C61-2385-4070-9FB4-060AA2FCB465");

}  // namespace korvalin
