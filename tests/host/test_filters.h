#pragma once

#include <cstring>
#include <mutex>
#include <vector>

#include "host/base_filter.h"
#include "host/input_pin.h"
#include "host/media_guids.h"
#include "host/position_pass_through.h"
#include "host/source_filter.h"
#include "host/transform_filter.h"

namespace korvalin::host::testing {

inline constexpr CLSID kSourceClsid = MakeGuid("11111111-0000-4000-8000-000000000001");
inline constexpr CLSID kAddOneClsid = MakeGuid("11111111-0000-4000-8000-000000000002");
inline constexpr CLSID kSinkClsid = MakeGuid("11111111-0000-4000-8000-000000000003");
inline constexpr CLSID kToRgbClsid = MakeGuid("11111111-0000-4000-8000-000000000004");
inline constexpr REFERENCE_TIME kFrameTime = 400000;

// A VIDEOINFOHEADER type of a 4 x 2 picture.
inline AM_MEDIA_TYPE VideoType(const GUID& subtype = MEDIASUBTYPE_YUY2) {
  VIDEOINFOHEADER vih;
  vih.AvgTimePerFrame = kFrameTime;
  vih.bmiHeader.biWidth = 4;
  vih.bmiHeader.biHeight = 2;
  vih.bmiHeader.biBitCount = 16;
  vih.bmiHeader.biCompression = subtype.Data1;
  vih.bmiHeader.biSizeImage = GetBitmapSize(vih.bmiHeader);
  AM_MEDIA_TYPE type;
  type.majortype = MEDIATYPE_Video;
  type.subtype = subtype;
  type.formattype = FORMAT_VideoInfo;
  type.lSampleSize = vih.bmiHeader.biSizeImage;
  SetFormatBlock(&type, vih);
  return type;
}

inline HRESULT SizeBuffers(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request, uint32_t size) {
  request->cBuffers = 2;
  request->cbBuffer = static_cast<int32_t>(size);
  ALLOCATOR_PROPERTIES actual;
  return allocator->SetProperties(request, &actual);
}

class CountingStream : public SourceStream {
 public:
  CountingStream(BaseFilter* filter, int frames, int failAt)
      : SourceStream(filter, u"Out"), frames_(frames), failAt_(failAt) {}

  HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
    return MediaTypesEqual(type, VideoType()) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override {
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    *type = VideoType();
    return S_OK;
  }
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
    return SizeBuffers(allocator, request, mt_.lSampleSize);
  }
  HRESULT OnThreadStartPlay() override {
    next_ = 0;
    return DeliverNewSegment(kFrameTime, kFrameTime * (frames_ + 1), 1.0);
  }
  HRESULT FillBuffer(IMediaSample* sample) override {
    if (next_ == frames_) return S_FALSE;
    if (next_ == failAt_) return E_FAIL;
    uint8_t* data = nullptr;
    sample->GetPointer(&data);
    std::memset(data, next_, static_cast<std::size_t>(sample->GetSize()));
    sample->SetActualDataLength(sample->GetSize());
    REFERENCE_TIME start = next_ * kFrameTime, end = start + kFrameTime;
    sample->SetTime(&start, &end);
    sample->SetSyncPoint(true);
    ++next_;
    return S_OK;
  }

 private:
  int frames_, failAt_, next_ = 0;
};

// Sends `frames` samples, each holding its index in every byte, and knows their duration;
// fails the stream at frame `failAt`.
class CountingSource : public SourceFilter, public IMediaPosition {
 public:
  explicit CountingSource(int frames, int failAt = -1)
      : SourceFilter(kSourceClsid), frames_(frames) {
    AddStream(std::make_unique<CountingStream>(this, frames, failAt));
  }
  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override {
    if (out && iid == IID_IMediaPosition)
      return GetInterface(static_cast<IMediaPosition*>(this), out);
    return SourceFilter::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT get_Duration(double* seconds) override {
    *seconds = frames_ * kFrameTime / 1e7;
    return S_OK;
  }

 private:
  int frames_;
};

// Adds one to every byte; drops the frames whose first byte is `dropValue`.
class AddOneFilter : public TransformFilter {
 public:
  explicit AddOneFilter(int dropValue = -1)
      : TransformFilter(kAddOneClsid), dropValue_(dropValue) {}

  HRESULT CheckInputType(const AM_MEDIA_TYPE& type) override {
    return type.subtype == MEDIASUBTYPE_YUY2 && type.formattype == FORMAT_VideoInfo
               ? S_OK
               : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out) override {
    return MediaTypesEqual(in, out) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
    return SizeBuffers(allocator, request, OutputPin()->CurrentMediaType().lSampleSize);
  }
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override {
    if (!InputPin()->IsConnected()) return E_UNEXPECTED;
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    return CopyMediaType(type, InputPin()->CurrentMediaType());
  }
  HRESULT Transform(IMediaSample* in, IMediaSample* out) override {
    uint8_t *from = nullptr, *to = nullptr;
    in->GetPointer(&from);
    out->GetPointer(&to);
    if (from[0] == dropValue_) return S_FALSE;
    for (int32_t i = 0; i < in->GetActualDataLength(); ++i)
      to[i] = static_cast<uint8_t>(from[i] + 1);
    out->SetActualDataLength(in->GetActualDataLength());
    REFERENCE_TIME start, end;
    if (in->GetTime(&start, &end) == S_OK) out->SetTime(&start, &end);
    return S_OK;
  }
  HRESULT CompleteConnect(PIN_DIRECTION direction, IPin* pin) override {
    ++completions_[direction];
    return TransformFilter::CompleteConnect(direction, pin);
  }

  int completions_[2] = {0, 0};

 private:
  int dropValue_;
};

// Records the first byte and the start time of each sample, and the last segment start.
class RecordingSink : public BaseFilter {
 public:
  explicit RecordingSink(GUID subtype = MEDIASUBTYPE_YUY2)
      : BaseFilter(kSinkClsid), subtype_(subtype), pin_(this) {}
  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override {
    if (out && iid == IID_IMediaPosition) {
      if (!position_) position_ = InnerPtr<PositionPassThrough>::Make(this, &pin_);
      return position_->NonDelegatingQueryInterface(iid, out);
    }
    return BaseFilter::NonDelegatingQueryInterface(iid, out);
  }
  int GetPinCount() override { return 1; }
  BasePin* GetPin(int index) override { return index == 0 ? &pin_ : nullptr; }

  class Pin : public RenderedInputPin {
   public:
    explicit Pin(RecordingSink* sink) : RenderedInputPin(sink, u"In"), sink_(sink) {}
    HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) override {
      return type.subtype == sink_->subtype_ ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }
    HRESULT Receive(IMediaSample* sample) override {
      const HRESULT hr = RenderedInputPin::Receive(sample);
      if (hr != S_OK) return hr;
      uint8_t* data = nullptr;
      sample->GetPointer(&data);
      REFERENCE_TIME start = -1, end = -1;
      sample->GetTime(&start, &end);
      std::lock_guard lock(sink_->recordLock_);
      sink_->frames_.push_back({data[0], start});
      return S_OK;
    }
    HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override {
      std::lock_guard lock(sink_->recordLock_);
      sink_->segmentStart_ = start;
      return RenderedInputPin::NewSegment(start, stop, rate);
    }

   private:
    RecordingSink* sink_;
  };
  Pin* InPin() { return &pin_; }

  struct Frame {
    int firstByte;
    REFERENCE_TIME start;
  };
  std::vector<Frame> Frames() {
    std::lock_guard lock(recordLock_);
    return frames_;
  }

  GUID subtype_;
  std::mutex recordLock_;
  std::vector<Frame> frames_;
  REFERENCE_TIME segmentStart_ = -1;

 private:
  Pin pin_;
  InnerPtr<PositionPassThrough> position_;
};

// Relabels YUY2 frames as RGB32: a converter the graph builder can put before an RGB sink.
class ToRgbFilter : public AddOneFilter {
 public:
  HRESULT CheckTransform(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out) override {
    return out.subtype == MEDIASUBTYPE_RGB32 && CheckInputType(in) == S_OK
               ? S_OK
               : VFW_E_TYPE_NOT_ACCEPTED;
  }
  HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type) override {
    if (!InputPin()->IsConnected()) return E_UNEXPECTED;
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    *type = VideoType(MEDIASUBTYPE_RGB32);
    return S_OK;
  }
};

}  // namespace korvalin::host::testing
