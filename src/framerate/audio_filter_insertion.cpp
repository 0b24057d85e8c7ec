#include "framerate/audio_filter_insertion.h"

#include "framerate/audio_rate_filter.h"
#include "host/media_guids.h"
#include "host/pin_helpers.h"

namespace korvalin {

using namespace host;

namespace {

bool AlreadyInserted(IFilterGraph* graph) {
  ComPtr<IBaseFilter> found;
  return SUCCEEDED(graph->FindFilterByName(kAudioRateFilterName, found.ReleaseAndGetAddressOf()));
}

bool IsPcmWave(const AM_MEDIA_TYPE& type) {
  return type.formattype == FORMAT_WaveFormatEx && type.subtype == MEDIASUBTYPE_PCM;
}

// Puts the audio filter between `upstream` and `rendererPin`; whether both new connections
// stand (the output's connection reconnects the input, which may fail on its own).
bool Splice(IGraphBuilder* builder, AudioRateFilter* filter, IPin* upstream, IPin* rendererPin,
            const AM_MEDIA_TYPE& type) {
  builder->Disconnect(upstream);
  builder->Disconnect(rendererPin);
  builder->ConnectDirect(upstream, filter->InputPin(), &type);
  builder->ConnectDirect(filter->OutputPin(), rendererPin, nullptr);
  return filter->InputPin()->IsConnected() && filter->OutputPin()->IsConnected();
}

}  // namespace

ComPtr<IBaseFilter> FindAudioRenderer(IFilterGraph* graph) {
  ComPtr<IEnumFilters> filters;
  if (!graph || FAILED(graph->EnumFilters(filters.ReleaseAndGetAddressOf()))) return {};
  ComPtr<IBaseFilter> filter;
  while (filters->Next(1, filter.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    if (QueryAs<IBasicAudio>(filter.Get())) return filter;
  }
  return {};
}

void InsertAudioFilter(IFilterGraph* graph, IPin* videoInput, int32_t rate) {
  if (rate < 1 || !graph || !ConnectedPin(videoInput)) return;
  if (AlreadyInserted(graph)) return;
  const ComPtr<IBaseFilter> renderer = FindAudioRenderer(graph);
  if (!renderer) return;
  const auto pins = PinsOf(renderer.Get());
  if (pins.empty()) return;
  IPin* rendererPin = pins.front().Get();
  const ComPtr<IPin> upstream = ConnectedPin(rendererPin);
  AM_MEDIA_TYPE type;
  if (!upstream || FAILED(rendererPin->ConnectionMediaType(&type)) || !IsPcmWave(type)) return;
  const auto builder = QueryAs<IGraphBuilder>(graph);
  const auto filter = MakeCom<AudioRateFilter>();
  if (!builder || !filter) return;
  filter->SetRate(rate);
  if (FAILED(graph->AddFilter(filter.Get(), kAudioRateFilterName))) return;
  if (!Splice(builder.Get(), filter.Get(), upstream.Get(), rendererPin, type)) {
    // Leave the sound playing at its own speed rather than cut off.
    builder->RemoveFilter(filter.Get());
    builder->ConnectDirect(upstream.Get(), rendererPin, &type);
  }
}

}  // namespace korvalin
