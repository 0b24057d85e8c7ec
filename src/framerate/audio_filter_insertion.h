#pragma once

#include <cstdint>
#include <string_view>

#include "host/com_ptr.h"
#include "host/filter_interfaces.h"
#include "host/pin_interfaces.h"

namespace korvalin {

// The name the audio rate filter goes by in a graph; finding it means it is there already.
inline constexpr std::u16string_view kAudioRateFilterName = u"Korvalin Audio";

// The first filter, in the graph's order, that answers IBasicAudio; empty when none does.
host::ComPtr<host::IBaseFilter> FindAudioRenderer(host::IFilterGraph* graph);

// Splices an AudioRateFilter with `rate` between the audio renderer and the pin feeding it,
// once per graph, when `rate` is at least 1, the video input is connected and the renderer
// takes PCM. Nothing changes otherwise. When the graph refuses the new connections, the
// audio filter is taken out again and the renderer reconnected as it was.
void InsertAudioFilter(host::IFilterGraph* graph, host::IPin* videoInput, int32_t rate);

}  // namespace korvalin
