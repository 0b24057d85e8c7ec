#pragma once

#include <mutex>
#include <string>

#include "host/com_ptr.h"
#include "host/media_type.h"
#include "host/pin_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

class BaseFilter;

// The connection logic shared by input and output pins. A pin belongs to its filter: it
// counts references on the filter and works under the filter's lock. Derived pins decide
// which types they take (CheckMediaType) and offer (GetMediaType).
class BasePin : public UnknownBase, public IPin {
 public:
  BasePin(BaseFilter* filter, std::u16string name, PIN_DIRECTION direction);
  ~BasePin() override;

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;
  uint32_t NonDelegatingAddRef() override;
  uint32_t NonDelegatingRelease() override;

  // IPin
  HRESULT Connect(IPin* receivePin, const AM_MEDIA_TYPE* type) override;
  HRESULT ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
  HRESULT Disconnect() override;
  HRESULT ConnectedTo(IPin** pin) override;
  HRESULT ConnectionMediaType(AM_MEDIA_TYPE* type) override;
  HRESULT QueryPinInfo(PIN_INFO* info) override;
  HRESULT QueryDirection(PIN_DIRECTION* direction) override;
  // The pin's name unless a derived pin answers otherwise.
  HRESULT QueryId(std::u16string* id) override;
  HRESULT QueryAccept(const AM_MEDIA_TYPE* type) override;
  // The types GetMediaType offers from position 0 on, taken now.
  HRESULT EnumMediaTypes(IEnumMediaTypes** types) override;
  HRESULT EndOfStream() override { return S_OK; }
  HRESULT BeginFlush() override { return S_OK; }
  HRESULT EndFlush() override { return S_OK; }
  // Remembers the segment; derived pins pass it on.
  HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

  // S_OK when the pin takes the type.
  virtual HRESULT CheckMediaType(const AM_MEDIA_TYPE& type) = 0;
  // The type offered at position (0 first); VFW_S_NO_MORE_ITEMS past the last.
  virtual HRESULT GetMediaType(int position, AM_MEDIA_TYPE* type);
  // Becomes the pin's current type.
  virtual HRESULT SetMediaType(const AM_MEDIA_TYPE& type);
  // Before a connection: refuses a pin of the same direction (VFW_E_INVALID_DIRECTION).
  virtual HRESULT CheckConnect(IPin* pin);
  // After both ends agreed: last chance to refuse.
  virtual HRESULT CompleteConnect(IPin* /*receivePin*/) { return S_OK; }
  // Undoes what CheckConnect and CompleteConnect set up; also on a failed attempt.
  virtual HRESULT BreakConnect() { return S_OK; }
  // State changes of the filter, for connected pins: stopped -> paused, -> stopped, -> running.
  virtual HRESULT Active() { return S_OK; }
  virtual HRESULT Inactive() { return S_OK; }
  virtual HRESULT Run(REFERENCE_TIME /*start*/) { return S_OK; }

  bool IsConnected() const { return connected_ != nullptr; }
  IPin* GetConnected() const { return connected_.Get(); }
  PIN_DIRECTION Direction() const { return direction_; }
  const std::u16string& Name() const { return name_; }
  BaseFilter* Filter() const { return filter_; }
  AM_MEDIA_TYPE& CurrentMediaType() { return mt_; }
  const AM_MEDIA_TYPE& CurrentMediaType() const { return mt_; }
  REFERENCE_TIME SegmentStart() const { return segmentStart_; }
  REFERENCE_TIME SegmentStop() const { return segmentStop_; }
  double SegmentRate() const { return segmentRate_; }

 protected:
  std::recursive_mutex& Lock();
  bool FilterStopped() const;

  ComPtr<IPin> connected_;
  AM_MEDIA_TYPE mt_;

 private:
  HRESULT AgreeMediaType(IPin* receivePin, const AM_MEDIA_TYPE* partial);
  HRESULT TryMediaTypes(IPin* receivePin, const AM_MEDIA_TYPE* partial, IEnumMediaTypes* types);
  HRESULT AttemptConnection(IPin* receivePin, const AM_MEDIA_TYPE& type);
  // After a failed attempt or a disconnection.
  void ClearConnection();

  BaseFilter* filter_;
  std::u16string name_;
  PIN_DIRECTION direction_;
  REFERENCE_TIME segmentStart_ = 0;
  REFERENCE_TIME segmentStop_ = 0;
  double segmentRate_ = 1.0;
};

}  // namespace korvalin::host
