#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "host/base_filter.h"
#include "host/output_pin.h"

namespace korvalin::host {

// An output pin with its own streaming thread: from pause to stop it fills buffers and
// delivers them downstream, and at the end of the data delivers end of stream.
class SourceStream : public BaseOutputPin {
 public:
  SourceStream(BaseFilter* filter, std::u16string name);
  ~SourceStream() override;

  // Starts the thread after committing the allocator.
  HRESULT Active() override;
  // Decommits the allocator (a thread waiting for a buffer wakes) and joins the thread.
  HRESULT Inactive() override;

  // Writes the next sample. S_OK delivers it, S_FALSE ends the stream, a failure aborts it
  // (EC_ERRORABORT).
  virtual HRESULT FillBuffer(IMediaSample* sample) = 0;
  // On the streaming thread before the first sample: a source announces its segment here.
  virtual HRESULT OnThreadStartPlay() { return S_OK; }

 private:
  void StreamLoop();
  void StopThread();

  std::thread thread_;
  std::atomic<bool> stopRequested_{false};
};

// A filter without inputs whose output pins are SourceStreams: the source that drives a
// graph, one streaming thread per pin.
class SourceFilter : public BaseFilter {
 public:
  using BaseFilter::BaseFilter;

  int GetPinCount() override { return static_cast<int>(streams_.size()); }
  BasePin* GetPin(int index) override;

 protected:
  // The filter owns its pins; add them in the constructor.
  void AddStream(std::unique_ptr<SourceStream> stream) { streams_.push_back(std::move(stream)); }

 private:
  std::vector<std::unique_ptr<SourceStream>> streams_;
};

}  // namespace korvalin::host
