#pragma once

#include <cstdint>
#include <string_view>

#include "host/format_blocks.h"
#include "host/media_type.h"
#include "host/unknown.h"

namespace korvalin::host {

struct IBaseFilter;
struct IEnumFilters;
struct IPin;

// Graph membership and direct connection: what filters may call on their graph.
struct IFilterGraph : virtual IUnknown {
  static constexpr IID kIid = HostIid(20);

  // The name is made unique: a taken name gets a blank and a number ("Name 0001").
  virtual HRESULT AddFilter(IBaseFilter* filter, std::u16string_view name) = 0;
  // Disconnects the filter's pins first. VFW_E_NOT_FOUND, VFW_E_NOT_STOPPED while streaming.
  virtual HRESULT RemoveFilter(IBaseFilter* filter) = 0;
  virtual HRESULT EnumFilters(IEnumFilters** filters) = 0;
  virtual HRESULT FindFilterByName(std::u16string_view name, IBaseFilter** filter) = 0;
  // Connects exactly these two pins, with `type` or with a type they agree on.
  virtual HRESULT ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) = 0;
  // Breaks the pin's connection and connects the same two pins again, agreeing on a type
  // afresh. Asked from inside a connection the graph is making (a filter's CompleteConnect),
  // it runs as soon as that connection is done, and S_OK then only means it is scheduled:
  // so no pin's lock is taken while another connection holds it.
  virtual HRESULT Reconnect(IPin* pin) = 0;
  // Disconnects this pin only; the other end is the caller's to disconnect.
  virtual HRESULT Disconnect(IPin* pin) = 0;
  virtual HRESULT SetDefaultSyncSource() = 0;
};

// Connection through intermediate filters: those already in the graph first, then
// registered filters by merit.
struct IGraphBuilder : IFilterGraph {
  static constexpr IID kIid = HostIid(21);

  virtual HRESULT Connect(IPin* output, IPin* input) = 0;
  // Connects the output pin through to some renderer (a filter without output pins).
  virtual HRESULT Render(IPin* output) = 0;
};

struct IFilterGraph2 : IGraphBuilder {
  static constexpr IID kIid = HostIid(22);

  // Reconnect, proposing `type` (null: agree afresh).
  virtual HRESULT ReconnectEx(IPin* pin, const AM_MEDIA_TYPE* type) = 0;
};

// Running the graph as a whole. Run and Pause return once every filter has changed state.
struct IMediaControl : virtual IUnknown {
  static constexpr IID kIid = HostIid(23);

  virtual HRESULT Run() = 0;
  virtual HRESULT Pause() = 0;
  virtual HRESULT Stop() = 0;
  virtual HRESULT GetState(int32_t timeoutMs, int32_t* state) = 0;  // a FILTER_STATE
};

// Graph events. Codes of the published set.
inline constexpr int32_t EC_COMPLETE = 0x01;
inline constexpr int32_t EC_USERABORT = 0x02;
inline constexpr int32_t EC_ERRORABORT = 0x03;

inline constexpr int32_t INFINITE = -1;

struct IMediaEvent : virtual IUnknown {
  static constexpr IID kIid = HostIid(24);

  // Takes the oldest event; E_ABORT when none comes within the timeout.
  virtual HRESULT GetEvent(int32_t* code, intptr_t* param1, intptr_t* param2,
                           int32_t timeoutMs) = 0;
  // Waits until every renderer has reached the end of its stream (*code EC_COMPLETE) or the
  // stream was aborted (EC_ERRORABORT, EC_USERABORT). E_ABORT on timeout,
  // VFW_E_WRONG_STATE while the graph is stopped.
  virtual HRESULT WaitForCompletion(int32_t timeoutMs, int32_t* code) = 0;
};

// What filters call to raise an event on their graph.
struct IMediaEventSink : virtual IUnknown {
  static constexpr IID kIid = HostIid(25);

  virtual HRESULT Notify(int32_t code, intptr_t param1, intptr_t param2) = 0;
};

// The media's length. Times in seconds.
struct IMediaPosition : virtual IUnknown {
  static constexpr IID kIid = HostIid(26);

  virtual HRESULT get_Duration(double* seconds) = 0;
};

inline constexpr IID IID_IFilterGraph = IFilterGraph::kIid;
inline constexpr IID IID_IGraphBuilder = IGraphBuilder::kIid;
inline constexpr IID IID_IFilterGraph2 = IFilterGraph2::kIid;
inline constexpr IID IID_IMediaControl = IMediaControl::kIid;
inline constexpr IID IID_IMediaEvent = IMediaEvent::kIid;
inline constexpr IID IID_IMediaEventSink = IMediaEventSink::kIid;
inline constexpr IID IID_IMediaPosition = IMediaPosition::kIid;

}  // namespace korvalin::host
