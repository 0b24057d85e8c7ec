#include "host/transform_filter.h"

namespace korvalin::host {

TransformFilter::TransformFilter(const CLSID& clsid, IUnknown* outer) : BaseFilter(clsid, outer) {}

TransformFilter::~TransformFilter() = default;

BasePin* TransformFilter::GetPin(int index) {
  std::lock_guard lock(filterLock_);
  if (!input_) input_ = std::make_unique<TransformInputPin>(this, u"XForm In");
  if (!output_) output_ = std::make_unique<TransformOutputPin>(this, u"XForm Out");
  if (index == 0) return input_.get();
  if (index == 1) return output_.get();
  return nullptr;
}

// Without the filter lock once the pins exist: the streaming thread calls these, and Stop
// holds the filter lock while it waits for the streaming lock.
TransformInputPin* TransformFilter::InputPin() {
  if (!input_) GetPin(0);
  return input_.get();
}

TransformOutputPin* TransformFilter::OutputPin() {
  if (!output_) GetPin(1);
  return output_.get();
}

HRESULT TransformFilter::Stop() {
  std::lock_guard lock(filterLock_);
  if (IsStopped()) return S_OK;
  TransformInputPin* input = InputPin();
  TransformOutputPin* output = OutputPin();
  // Streaming ran only with both pins connected: connections do not change until stopped.
  const bool streaming = input->IsConnected() && output->IsConnected();
  if (input->IsConnected()) input->Inactive();  // frees a Receive waiting for a buffer
  std::lock_guard streamingLock(receiveLock_);
  if (output->IsConnected()) output->Inactive();
  const HRESULT hr = streaming ? StopStreaming() : S_OK;
  state_ = State_Stopped;
  return hr;
}

HRESULT TransformFilter::Pause() {
  std::lock_guard lock(filterLock_);
  if (state_ == State_Paused) return S_OK;
  TransformInputPin* input = InputPin();
  TransformOutputPin* output = OutputPin();
  if (IsStopped() && output->IsConnected() && !input->IsConnected()) {
    // Nothing will ever arrive: the stream downstream ends at once.
    output->DeliverEndOfStream();
  } else if (IsStopped() && input->IsConnected() && output->IsConnected()) {
    const HRESULT hr = StartStreaming();
    if (FAILED(hr)) return hr;
  }
  return BaseFilter::Pause();
}

HRESULT TransformFilter::Transform(IMediaSample* /*in*/, IMediaSample* /*out*/) {
  return E_UNEXPECTED;  // filters that copy override this; others override Receive
}

HRESULT TransformFilter::Receive(IMediaSample* sample) {
  ComPtr<IMediaSample> out;
  HRESULT hr = OutputPin()->GetDeliveryBuffer(out.ReleaseAndGetAddressOf(), nullptr, nullptr, 0);
  if (FAILED(hr)) return hr;
  hr = Transform(sample, out.Get());
  if (hr == S_OK) return OutputPin()->Deliver(out.Get());
  return hr == S_FALSE ? S_OK : hr;  // S_FALSE drops the sample quietly
}

HRESULT TransformFilter::EndOfStream() {
  TransformOutputPin* output = OutputPin();
  return output->IsConnected() ? output->DeliverEndOfStream() : S_OK;
}

HRESULT TransformFilter::BeginFlush() {
  TransformOutputPin* output = OutputPin();
  return output->IsConnected() ? output->DeliverBeginFlush() : S_OK;
}

HRESULT TransformFilter::EndFlush() {
  TransformOutputPin* output = OutputPin();
  return output->IsConnected() ? output->DeliverEndFlush() : S_OK;
}

HRESULT TransformFilter::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  TransformOutputPin* output = OutputPin();
  return output->IsConnected() ? output->DeliverNewSegment(start, stop, rate) : S_OK;
}

}  // namespace korvalin::host
