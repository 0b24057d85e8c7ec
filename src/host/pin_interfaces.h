#pragma once

#include <cstdint>
#include <string>

#include "host/com_ptr.h"
#include "host/filter_interfaces.h"
#include "host/media_type.h"
#include "host/sample_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

struct IEnumMediaTypes;

enum PIN_DIRECTION : int32_t { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };

struct PIN_INFO {
  ComPtr<IBaseFilter> pFilter;
  PIN_DIRECTION dir = PINDIR_INPUT;
  std::u16string achName;
};

// One end of a connection. An output pin starts a connection (Connect) and the input pin
// answers it (ReceiveConnection). A pin is part of its filter: it counts its references on
// the filter.
struct IPin : virtual IUnknown {
  static constexpr IID kIid = HostIid(30);

  // Agrees on a type (`type` null or partial: the receiving pin's types, then ours), then
  // connects. VFW_E_ALREADY_CONNECTED, VFW_E_NOT_STOPPED, VFW_E_NO_ACCEPTABLE_TYPES.
  virtual HRESULT Connect(IPin* receivePin, const AM_MEDIA_TYPE* type) = 0;
  virtual HRESULT ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) = 0;
  // S_OK, or S_FALSE when not connected; VFW_E_NOT_STOPPED while the filter streams.
  virtual HRESULT Disconnect() = 0;
  // VFW_E_NOT_CONNECTED with *pin null when not connected.
  virtual HRESULT ConnectedTo(IPin** pin) = 0;
  virtual HRESULT ConnectionMediaType(AM_MEDIA_TYPE* type) = 0;
  virtual HRESULT QueryPinInfo(PIN_INFO* info) = 0;
  virtual HRESULT QueryDirection(PIN_DIRECTION* direction) = 0;
  virtual HRESULT QueryId(std::u16string* id) = 0;
  // S_OK when the pin would accept the type now, else S_FALSE.
  virtual HRESULT QueryAccept(const AM_MEDIA_TYPE* type) = 0;
  virtual HRESULT EnumMediaTypes(IEnumMediaTypes** types) = 0;
  virtual HRESULT EndOfStream() = 0;
  virtual HRESULT BeginFlush() = 0;
  virtual HRESULT EndFlush() = 0;
  virtual HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) = 0;
};

// The sample transport of an input pin.
struct IMemInputPin : virtual IUnknown {
  static constexpr IID kIid = HostIid(31);

  virtual HRESULT GetAllocator(IMemAllocator** allocator) = 0;
  // The allocator the upstream pin chose for the connection.
  virtual HRESULT NotifyAllocator(IMemAllocator* allocator, bool readOnly) = 0;
  // E_NOTIMPL when the pin has no wishes.
  virtual HRESULT GetAllocatorRequirements(ALLOCATOR_PROPERTIES* props) = 0;
  // On the upstream's streaming thread. S_FALSE asks the upstream to stop sending.
  virtual HRESULT Receive(IMediaSample* sample) = 0;
  // S_OK when Receive may wait (a renderer holding frames), S_FALSE when it never does.
  virtual HRESULT ReceiveCanBlock() = 0;
};

struct IEnumPins : virtual IUnknown {
  static constexpr IID kIid = HostIid(32);

  virtual HRESULT Next(uint32_t count, IPin** pins, uint32_t* fetched) = 0;
  virtual HRESULT Skip(uint32_t count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumPins** copy) = 0;
};

struct IEnumMediaTypes : virtual IUnknown {
  static constexpr IID kIid = HostIid(33);

  virtual HRESULT Next(uint32_t count, MediaTypePtr* types, uint32_t* fetched) = 0;
  virtual HRESULT Skip(uint32_t count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumMediaTypes** copy) = 0;
};

inline constexpr IID IID_IPin = IPin::kIid;
inline constexpr IID IID_IMemInputPin = IMemInputPin::kIid;
inline constexpr IID IID_IEnumPins = IEnumPins::kIid;
inline constexpr IID IID_IEnumMediaTypes = IEnumMediaTypes::kIid;

}  // namespace korvalin::host
