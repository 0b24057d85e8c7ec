#pragma once

#include <cstdint>

#include "host/position_pass_through.h"
#include "host/transform_filter.h"

namespace korvalin {

inline constexpr host::CLSID CLSID_AudioRateFilter =
    host::MakeGuid("0C06FA59-3211-4EE3-9CBE-4CC233A68B26");

// The PCM format that plays `format`'s samples rate / 400000 times as fast: the sample rate
// raised (64-bit product, truncated) and the byte rate following it; every other field as it
// was. A rate below 1 gives the format unchanged.
host::WAVEFORMATEX RaisedWaveFormat(const host::WAVEFORMATEX& format, int32_t rate);

// Sits in front of the audio renderer and passes every PCM buffer through untouched, the
// very sample, while declaring a sample rate raised by rate / 400000: the renderer plays the
// same sound faster, in step with a video played at 25 frames per second. Upstream writes
// straight into the renderer's buffers (the input pin hands out the renderer's allocator).
class AudioRateFilter : public host::TransformFilter {
 public:
  AudioRateFilter();
  ~AudioRateFilter() override;

  // Set by the creator before the filter connects; 0 leaves the format unchanged.
  void SetRate(int32_t rate) { rate_ = rate; }
  int32_t Rate() const { return rate_; }

  // IMediaPosition goes to the filter upstream, through a pass-through made on first request.
  host::HRESULT NonDelegatingQueryInterface(const host::IID& iid, void** out) override;
  host::BasePin* GetPin(int index) override;

  // PCM in a WAVEFORMATEX block, else VFW_E_TYPE_NOT_ACCEPTED.
  host::HRESULT CheckInputType(const host::AM_MEDIA_TYPE& type) override;
  // The input decides; any output type the renderer agreed to will do.
  host::HRESULT CheckTransform(const host::AM_MEDIA_TYPE& in,
                               const host::AM_MEDIA_TYPE& out) override;
  // The input allocator's properties, so both connections share one buffer layout.
  host::HRESULT DecideBufferSize(host::IMemAllocator* allocator,
                                 host::ALLOCATOR_PROPERTIES* request) override;
  // Position 0 only: the input's type with the raised rate.
  host::HRESULT GetMediaType(int position, host::AM_MEDIA_TYPE* type) override;
  // Once the output connects, the input connects again so that upstream picks up the
  // renderer's allocator. VFW_E_NOT_IN_GRAPH outside a graph.
  host::HRESULT CompleteConnect(host::PIN_DIRECTION direction, host::IPin* pin) override;
  // Drops a format change the sample carries (the renderer keeps the raised rate) and
  // delivers the same sample downstream.
  host::HRESULT Receive(host::IMediaSample* sample) override;

 private:
  class RateInputPin;

  int32_t rate_ = 0;
  host::InnerPtr<host::PositionPassThrough> position_;
};

}  // namespace korvalin
