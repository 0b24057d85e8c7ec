#include "host/base_pin.h"

#include <vector>

#include "host/base_filter.h"
#include "host/list_enumerator.h"

namespace korvalin::host {
namespace {

bool FullySpecified(const AM_MEDIA_TYPE& type) {
  return type.majortype != GUID_NULL && type.subtype != GUID_NULL && type.formattype != GUID_NULL;
}

// A refusal that did not say why counts as a type refusal.
HRESULT AsRefusal(HRESULT hr) {
  return FAILED(hr) ? hr : VFW_E_TYPE_NOT_ACCEPTED;
}

}  // namespace

BasePin::BasePin(BaseFilter* filter, std::u16string name, PIN_DIRECTION direction)
    : filter_(filter), name_(std::move(name)), direction_(direction) {}

BasePin::~BasePin() = default;

HRESULT BasePin::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IPin) return GetInterface(static_cast<IPin*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

uint32_t BasePin::NonDelegatingAddRef() {
  return filter_->AddRef();
}

uint32_t BasePin::NonDelegatingRelease() {
  return filter_->Release();
}

std::recursive_mutex& BasePin::Lock() {
  return filter_->FilterLock();
}

bool BasePin::FilterStopped() const {
  return filter_->IsStopped();
}

HRESULT BasePin::Connect(IPin* receivePin, const AM_MEDIA_TYPE* type) {
  if (!receivePin) return E_POINTER;
  std::lock_guard lock(Lock());
  if (connected_) return VFW_E_ALREADY_CONNECTED;
  if (!FilterStopped()) return VFW_E_NOT_STOPPED;
  return AgreeMediaType(receivePin, type);
}

HRESULT BasePin::AgreeMediaType(IPin* receivePin, const AM_MEDIA_TYPE* partial) {
  if (partial && FullySpecified(*partial)) return AttemptConnection(receivePin, *partial);
  HRESULT result = VFW_E_NO_ACCEPTABLE_TYPES;
  for (IPin* offering : {receivePin, static_cast<IPin*>(this)}) {
    ComPtr<IEnumMediaTypes> types;
    if (FAILED(offering->EnumMediaTypes(types.ReleaseAndGetAddressOf()))) continue;
    const HRESULT hr = TryMediaTypes(receivePin, partial, types.Get());
    if (SUCCEEDED(hr)) return hr;
    // Keep the most telling refusal: a pin's own reason beats "nothing matched".
    if (hr != VFW_E_NO_ACCEPTABLE_TYPES) result = hr;
  }
  return result;
}

HRESULT BasePin::TryMediaTypes(IPin* receivePin, const AM_MEDIA_TYPE* partial,
                               IEnumMediaTypes* types) {
  HRESULT result = VFW_E_NO_ACCEPTABLE_TYPES;
  MediaTypePtr type;
  while (types->Next(1, &type, nullptr) == S_OK && type) {
    if (partial && !MatchesPartialType(*type, *partial)) continue;
    const HRESULT hr = AttemptConnection(receivePin, *type);
    if (SUCCEEDED(hr)) return S_OK;
    result = hr;
  }
  return result;
}

HRESULT BasePin::AttemptConnection(IPin* receivePin, const AM_MEDIA_TYPE& type) {
  HRESULT hr = CheckConnect(receivePin);
  if (FAILED(hr)) {
    BreakConnect();
    return hr;
  }
  hr = CheckMediaType(type);
  if (hr != S_OK) {
    BreakConnect();
    return AsRefusal(hr);
  }
  connected_ = receivePin;
  hr = SetMediaType(type);
  if (SUCCEEDED(hr)) {
    hr = receivePin->ReceiveConnection(this, &type);
    if (SUCCEEDED(hr)) {
      hr = CompleteConnect(receivePin);
      if (SUCCEEDED(hr)) return S_OK;
      receivePin->Disconnect();
    }
  }
  ClearConnection();
  return hr;
}

HRESULT BasePin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
  if (!connector || !type) return E_POINTER;
  std::lock_guard lock(Lock());
  if (connected_) return VFW_E_ALREADY_CONNECTED;
  if (!FilterStopped()) return VFW_E_NOT_STOPPED;
  HRESULT hr = CheckConnect(connector);
  if (FAILED(hr)) {
    BreakConnect();
    return hr;
  }
  hr = CheckMediaType(*type);
  if (hr != S_OK) {
    BreakConnect();
    return AsRefusal(hr);
  }
  connected_ = connector;
  hr = SetMediaType(*type);
  if (SUCCEEDED(hr)) hr = CompleteConnect(connector);
  if (SUCCEEDED(hr)) return S_OK;
  ClearConnection();
  return hr;
}

void BasePin::ClearConnection() {
  BreakConnect();
  connected_.Reset();
  mt_ = AM_MEDIA_TYPE{};
}

HRESULT BasePin::Disconnect() {
  std::lock_guard lock(Lock());
  if (!FilterStopped()) return VFW_E_NOT_STOPPED;
  if (!connected_) return S_FALSE;
  ClearConnection();
  return S_OK;
}

HRESULT BasePin::ConnectedTo(IPin** pin) {
  if (!pin) return E_POINTER;
  std::lock_guard lock(Lock());
  connected_.CopyTo(pin);
  return connected_ ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT BasePin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
  if (!type) return E_POINTER;
  std::lock_guard lock(Lock());
  if (!connected_) {
    *type = AM_MEDIA_TYPE{};
    return VFW_E_NOT_CONNECTED;
  }
  return CopyMediaType(type, mt_);
}

HRESULT BasePin::QueryPinInfo(PIN_INFO* info) {
  if (!info) return E_POINTER;
  info->pFilter = static_cast<IBaseFilter*>(filter_);
  info->dir = direction_;
  info->achName = name_;
  return S_OK;
}

HRESULT BasePin::QueryDirection(PIN_DIRECTION* direction) {
  if (!direction) return E_POINTER;
  *direction = direction_;
  return S_OK;
}

HRESULT BasePin::QueryId(std::u16string* id) {
  if (!id) return E_POINTER;
  *id = name_;
  return S_OK;
}

HRESULT BasePin::QueryAccept(const AM_MEDIA_TYPE* type) {
  if (!type) return E_POINTER;
  std::lock_guard lock(Lock());
  return CheckMediaType(*type) == S_OK ? S_OK : S_FALSE;
}

HRESULT BasePin::EnumMediaTypes(IEnumMediaTypes** types) {
  if (!types) return E_POINTER;
  std::vector<AM_MEDIA_TYPE> offered;
  {
    std::lock_guard lock(Lock());
    for (int position = 0;; ++position) {
      AM_MEDIA_TYPE type;
      if (GetMediaType(position, &type) != S_OK) break;
      offered.push_back(std::move(type));
    }
  }
  return MakeEnumerator(std::move(offered), types);
}

HRESULT BasePin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  segmentStart_ = start;
  segmentStop_ = stop;
  segmentRate_ = rate;
  return S_OK;
}

HRESULT BasePin::GetMediaType(int position, AM_MEDIA_TYPE* /*type*/) {
  return position < 0 ? E_INVALIDARG : VFW_S_NO_MORE_ITEMS;
}

HRESULT BasePin::SetMediaType(const AM_MEDIA_TYPE& type) {
  return CopyMediaType(&mt_, type);
}

HRESULT BasePin::CheckConnect(IPin* pin) {
  PIN_DIRECTION other;
  if (FAILED(pin->QueryDirection(&other))) return E_FAIL;
  return other == direction_ ? VFW_E_INVALID_DIRECTION : S_OK;
}

}  // namespace korvalin::host
