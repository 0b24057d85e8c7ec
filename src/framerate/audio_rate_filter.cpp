#include "framerate/audio_rate_filter.h"

#include <cstring>

#include "framerate/rate_clock.h"
#include "host/media_guids.h"

namespace korvalin {

using namespace host;

WAVEFORMATEX RaisedWaveFormat(const WAVEFORMATEX& format, int32_t rate) {
  WAVEFORMATEX raised = format;
  if (rate < 1) return raised;
  raised.nSamplesPerSec =
      static_cast<uint32_t>(int64_t{format.nSamplesPerSec} * rate / kTargetFrameDuration);
  raised.nAvgBytesPerSec = static_cast<uint32_t>(
      (uint64_t{format.wBitsPerSample} * format.nChannels * raised.nSamplesPerSec) >> 3);
  return raised;
}

// Hands upstream the allocator of the pin downstream of the output, so that no buffer is
// ever copied on the way through.
class AudioRateFilter::RateInputPin : public TransformInputPin {
 public:
  explicit RateInputPin(AudioRateFilter* filter) : TransformInputPin(filter, u"XForm In") {}

  HRESULT GetAllocator(IMemAllocator** allocator) override {
    if (!allocator) return E_POINTER;
    *allocator = nullptr;
    TransformOutputPin* output = transform_->OutputPin();
    if (!output->IsConnected()) return VFW_E_NOT_CONNECTED;
    return output->ConnectedInputPin()->GetAllocator(allocator);
  }
};

AudioRateFilter::AudioRateFilter() : TransformFilter(CLSID_AudioRateFilter) {}

AudioRateFilter::~AudioRateFilter() = default;

HRESULT AudioRateFilter::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (!out) return E_POINTER;
  if (iid == IID_IMediaPosition) {
    std::lock_guard lock(filterLock_);
    if (!position_) {
      position_ = InnerPtr<PositionPassThrough>::Make(this, InputPin());
      if (!position_) return E_OUTOFMEMORY;
    }
    return position_->NonDelegatingQueryInterface(iid, out);
  }
  return TransformFilter::NonDelegatingQueryInterface(iid, out);
}

BasePin* AudioRateFilter::GetPin(int index) {
  std::lock_guard lock(filterLock_);
  if (!input_) input_ = std::make_unique<RateInputPin>(this);
  return TransformFilter::GetPin(index);
}

HRESULT AudioRateFilter::CheckInputType(const AM_MEDIA_TYPE& type) {
  WAVEFORMATEX format;
  const bool pcm = type.formattype == FORMAT_WaveFormatEx && type.subtype == MEDIASUBTYPE_PCM &&
                   ReadFormatBlock(type, &format);
  return pcm ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT AudioRateFilter::CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& /*out*/) {
  return CheckInputType(in);
}

HRESULT AudioRateFilter::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  TransformInputPin* input = InputPin();
  IMemAllocator* inputAllocator = input->IsConnected() ? input->Allocator() : nullptr;
  ALLOCATOR_PROPERTIES inputProps;
  if (!inputAllocator || FAILED(inputAllocator->GetProperties(&inputProps))) return E_FAIL;
  *request = inputProps;
  ALLOCATOR_PROPERTIES actual;
  return allocator->SetProperties(request, &actual);
}

HRESULT AudioRateFilter::GetMediaType(int position, AM_MEDIA_TYPE* type) {
  TransformInputPin* input = InputPin();
  if (!input->IsConnected()) return E_UNEXPECTED;
  if (position < 0) return E_INVALIDARG;
  if (position > 0) return VFW_S_NO_MORE_ITEMS;
  const HRESULT hr = CopyMediaType(type, input->CurrentMediaType());
  if (FAILED(hr)) return hr;
  WAVEFORMATEX format;
  if (ReadFormatBlock(*type, &format)) {
    // Only the leading block changes: extra bytes after it stay as they are.
    const WAVEFORMATEX raised = RaisedWaveFormat(format, rate_);
    std::memcpy(type->format.data(), &raised, FormatBlockSize<WAVEFORMATEX>);
  }
  return S_OK;
}

HRESULT AudioRateFilter::CompleteConnect(PIN_DIRECTION direction, IPin* /*pin*/) {
  IFilterGraph* graph = Graph();
  if (!graph) return VFW_E_NOT_IN_GRAPH;
  TransformInputPin* input = InputPin();
  if (direction == PINDIR_OUTPUT && input->IsConnected()) return graph->Reconnect(input);
  return S_OK;
}

HRESULT AudioRateFilter::Receive(IMediaSample* sample) {
  MediaTypePtr attached;
  if (sample->GetMediaType(&attached) == S_OK && attached && !attached->format.empty()) {
    sample->SetMediaType(nullptr);
  }
  return OutputPin()->Deliver(sample);
}

}  // namespace korvalin
