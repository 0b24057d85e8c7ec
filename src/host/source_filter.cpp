#include "host/source_filter.h"

#include "host/graph_interfaces.h"

namespace korvalin::host {

SourceStream::SourceStream(BaseFilter* filter, std::u16string name)
    : BaseOutputPin(filter, std::move(name)) {}

SourceStream::~SourceStream() {
  StopThread();
}

HRESULT SourceStream::Active() {
  const HRESULT hr = BaseOutputPin::Active();
  if (FAILED(hr)) return hr;
  StopThread();
  stopRequested_ = false;
  thread_ = std::thread([this] { StreamLoop(); });
  return S_OK;
}

HRESULT SourceStream::Inactive() {
  stopRequested_ = true;
  const HRESULT hr = BaseOutputPin::Inactive();
  StopThread();
  return hr;
}

void SourceStream::StopThread() {
  stopRequested_ = true;
  if (thread_.joinable()) thread_.join();
}

void SourceStream::StreamLoop() {
  HRESULT hr = OnThreadStartPlay();
  while (SUCCEEDED(hr) && !stopRequested_) {
    ComPtr<IMediaSample> sample;
    hr = GetDeliveryBuffer(sample.ReleaseAndGetAddressOf(), nullptr, nullptr, 0);
    if (FAILED(hr)) break;
    hr = FillBuffer(sample.Get());
    if (hr == S_FALSE) {
      DeliverEndOfStream();
      return;
    }
    if (hr == S_OK) hr = Deliver(sample.Get());
    if (hr == S_FALSE) return;  // downstream wants no more
  }
  // A failure while stopping is the stop itself, not an error of the stream. The abort goes
  // first, so that the run ends with it rather than with the end of stream that follows.
  if (FAILED(hr) && !stopRequested_) {
    Filter()->NotifyEvent(EC_ERRORABORT, hr, 0);
    DeliverEndOfStream();
  }
}

BasePin* SourceFilter::GetPin(int index) {
  if (index < 0 || index >= GetPinCount()) return nullptr;
  return streams_[static_cast<std::size_t>(index)].get();
}

}  // namespace korvalin::host
