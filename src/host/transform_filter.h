#pragma once

#include <memory>
#include <mutex>

#include "host/base_filter.h"
#include "host/transform_pins.h"

namespace korvalin::host {

// A filter with one input and one output that turns each input sample into an output
// sample. Derived filters say which types they take and offer, size the output buffers
// and write each output sample in Transform.
//
// Two locks: the filter lock (state, connection) and the streaming lock, held while a
// sample, end of stream, flush or segment passes. Stop decommits the input's allocator
// before taking the streaming lock, so a Receive waiting for a buffer lets go.
class TransformFilter : public BaseFilter {
 public:
  explicit TransformFilter(const CLSID& clsid, IUnknown* outer = nullptr);
  ~TransformFilter() override;

  HRESULT Stop() override;
  HRESULT Pause() override;

  int GetPinCount() override { return 2; }
  // Index 0 the input ("XForm In"), 1 the output ("XForm Out"), made together on first use;
  // a derived filter may place its own pin in input_ or output_ first.
  BasePin* GetPin(int index) override;

  // Writes `out` from `in`. `out` comes from the output pin's allocator with no times, flags
  // or data. S_OK delivers it, S_FALSE drops it, a failure stops the stream.
  virtual HRESULT Transform(IMediaSample* in, IMediaSample* out);
  virtual HRESULT CheckInputType(const AM_MEDIA_TYPE& type) = 0;
  virtual HRESULT CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out) = 0;
  virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
  // The output type at position; VFW_S_NO_MORE_ITEMS past the last.
  virtual HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) = 0;
  virtual HRESULT SetMediaType(PIN_DIRECTION /*direction*/, const AM_MEDIA_TYPE& /*type*/) {
    return S_OK;
  }
  virtual HRESULT CheckConnect(PIN_DIRECTION /*direction*/, IPin* /*pin*/) { return S_OK; }
  // After the pin completed its side; a failure undoes the connection.
  virtual HRESULT CompleteConnect(PIN_DIRECTION /*direction*/, IPin* /*pin*/) { return S_OK; }
  virtual HRESULT BreakConnect(PIN_DIRECTION /*direction*/) { return S_OK; }
  // Stopped -> paused with both pins connected, and back.
  virtual HRESULT StartStreaming() { return S_OK; }
  virtual HRESULT StopStreaming() { return S_OK; }

  // Stream events from the input pin, under the streaming lock. The defaults pass them on
  // downstream.
  virtual HRESULT Receive(IMediaSample* sample);
  virtual HRESULT EndOfStream();
  virtual HRESULT BeginFlush();
  virtual HRESULT EndFlush();
  virtual HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

  TransformInputPin* InputPin();
  TransformOutputPin* OutputPin();
  std::recursive_mutex& StreamingLock() { return receiveLock_; }

 protected:
  std::recursive_mutex receiveLock_;
  std::unique_ptr<TransformInputPin> input_;
  std::unique_ptr<TransformOutputPin> output_;
};

}  // namespace korvalin::host
