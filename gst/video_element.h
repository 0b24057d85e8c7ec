#pragma once

#include <gst/gst.h>

#include "filter/filter_settings.h"
#include "host/com_ptr.h"

namespace korvalin::gst {

// `korvalin`: the video filter as a GstVideoFilter.
gboolean RegisterVideoElement(GstPlugin* plugin);

// The name of the element message posted when the element has loaded a subtitle file
// (fields "file" and "format"), so an application can stop drawing subtitles of its own.
inline constexpr const char* kSubtitlesLoadedMessage = "korvalin-subtitles";

// The settings interface of the filter inside a `korvalin` element, empty while the element
// has no filter (load mode "Never", or before its first caps). A reference is held.
host::ComPtr<IFilterSettings> FilterSettingsOf(GstElement* element);

}  // namespace korvalin::gst
