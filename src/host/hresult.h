#pragma once

#include <cstdint>

namespace korvalin::host {

// Result codes of the pipeline's interfaces, with their Windows numeric values so that code
// comparing against a published value keeps working. Success codes are >= 0.
using HRESULT = int32_t;

constexpr bool SUCCEEDED(HRESULT hr) {
  return hr >= 0;
}
constexpr bool FAILED(HRESULT hr) {
  return hr < 0;
}

constexpr HRESULT MakeHresult(uint32_t value) {
  return static_cast<HRESULT>(value);
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;

inline constexpr HRESULT E_NOTIMPL = MakeHresult(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = MakeHresult(0x80004002);
inline constexpr HRESULT E_POINTER = MakeHresult(0x80004003);
inline constexpr HRESULT E_ABORT = MakeHresult(0x80004004);
inline constexpr HRESULT E_FAIL = MakeHresult(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = MakeHresult(0x8000FFFF);
inline constexpr HRESULT E_OUTOFMEMORY = MakeHresult(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = MakeHresult(0x80070057);

inline constexpr HRESULT VFW_S_NO_MORE_ITEMS = MakeHresult(0x00040103);
inline constexpr HRESULT VFW_S_DUPLICATE_NAME = MakeHresult(0x0004022D);
inline constexpr HRESULT VFW_S_STATE_INTERMEDIATE = MakeHresult(0x00040237);
inline constexpr HRESULT VFW_S_PARTIAL_RENDER = MakeHresult(0x00040242);
inline constexpr HRESULT VFW_S_NO_STOP_TIME = MakeHresult(0x00040270);

inline constexpr HRESULT VFW_E_INVALIDMEDIATYPE = MakeHresult(0x80040200);
inline constexpr HRESULT VFW_E_NEED_OWNER = MakeHresult(0x80040202);
inline constexpr HRESULT VFW_E_ALREADY_CONNECTED = MakeHresult(0x80040204);
inline constexpr HRESULT VFW_E_NO_TYPES = MakeHresult(0x80040206);
inline constexpr HRESULT VFW_E_NO_ACCEPTABLE_TYPES = MakeHresult(0x80040207);
inline constexpr HRESULT VFW_E_INVALID_DIRECTION = MakeHresult(0x80040208);
inline constexpr HRESULT VFW_E_NOT_CONNECTED = MakeHresult(0x80040209);
inline constexpr HRESULT VFW_E_NO_ALLOCATOR = MakeHresult(0x8004020A);
inline constexpr HRESULT VFW_E_RUNTIME_ERROR = MakeHresult(0x8004020B);
inline constexpr HRESULT VFW_E_BUFFER_OVERFLOW = MakeHresult(0x8004020D);
inline constexpr HRESULT VFW_E_BADALIGN = MakeHresult(0x8004020E);
inline constexpr HRESULT VFW_E_ALREADY_COMMITTED = MakeHresult(0x8004020F);
inline constexpr HRESULT VFW_E_BUFFERS_OUTSTANDING = MakeHresult(0x80040210);
inline constexpr HRESULT VFW_E_NOT_COMMITTED = MakeHresult(0x80040211);
inline constexpr HRESULT VFW_E_SIZENOTSET = MakeHresult(0x80040212);
inline constexpr HRESULT VFW_E_NOT_FOUND = MakeHresult(0x80040216);
inline constexpr HRESULT VFW_E_CANNOT_CONNECT = MakeHresult(0x80040217);
inline constexpr HRESULT VFW_E_CANNOT_RENDER = MakeHresult(0x80040218);
inline constexpr HRESULT VFW_E_NOT_STOPPED = MakeHresult(0x80040224);
inline constexpr HRESULT VFW_E_WRONG_STATE = MakeHresult(0x80040227);
inline constexpr HRESULT VFW_E_TYPE_NOT_ACCEPTED = MakeHresult(0x8004022A);
inline constexpr HRESULT VFW_E_DUPLICATE_NAME = MakeHresult(0x8004022D);
inline constexpr HRESULT VFW_E_TIMEOUT = MakeHresult(0x8004022E);
inline constexpr HRESULT VFW_E_CIRCULAR_GRAPH = MakeHresult(0x80040231);
inline constexpr HRESULT VFW_E_NO_ADVISE_SET = MakeHresult(0x80040239);
inline constexpr HRESULT VFW_E_SAMPLE_TIME_NOT_SET = MakeHresult(0x80040249);
inline constexpr HRESULT VFW_E_MEDIA_TIME_NOT_SET = MakeHresult(0x80040251);
inline constexpr HRESULT VFW_E_NOT_IN_GRAPH = MakeHresult(0x8004025F);

}  // namespace korvalin::host
