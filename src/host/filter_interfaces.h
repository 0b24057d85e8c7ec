#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/clock_interfaces.h"
#include "host/com_ptr.h"
#include "host/graph_interfaces.h"
#include "host/media_type.h"
#include "host/unknown.h"

namespace korvalin::host {

struct IEnumPins;
struct IPin;

enum FILTER_STATE : int32_t { State_Stopped = 0, State_Paused = 1, State_Running = 2 };

struct FILTER_INFO {
  std::u16string achName;
  ComPtr<IFilterGraph> pGraph;  // empty outside a graph
};

// State changes and the clock: what a graph and each filter in it answer.
struct IMediaFilter : virtual IUnknown {
  static constexpr IID kIid = HostIid(10);

  virtual HRESULT Stop() = 0;
  virtual HRESULT Pause() = 0;
  // Streams are timed from `start` on the reference clock.
  virtual HRESULT Run(REFERENCE_TIME start) = 0;
  virtual HRESULT GetState(uint32_t timeoutMs, FILTER_STATE* state) = 0;
  virtual HRESULT SetSyncSource(IReferenceClock* clock) = 0;
  virtual HRESULT GetSyncSource(IReferenceClock** clock) = 0;
};

struct IBaseFilter : IMediaFilter {
  static constexpr IID kIid = HostIid(11);

  virtual HRESULT GetClassID(CLSID* clsid) = 0;
  virtual HRESULT EnumPins(IEnumPins** pins) = 0;
  // The pin whose QueryId answers id; VFW_E_NOT_FOUND.
  virtual HRESULT FindPin(std::u16string_view id, IPin** pin) = 0;
  virtual HRESULT QueryFilterInfo(FILTER_INFO* info) = 0;
  // The graph calls this when the filter joins it (graph given) or leaves it (null). The
  // filter keeps a plain pointer to its graph: the graph owns the filter, not the reverse.
  virtual HRESULT JoinFilterGraph(IFilterGraph* graph, std::u16string_view name) = 0;
};

struct IEnumFilters : virtual IUnknown {
  static constexpr IID kIid = HostIid(12);

  // Up to count filters, each with a reference; S_OK when count were fetched, else S_FALSE.
  virtual HRESULT Next(uint32_t count, IBaseFilter** filters, uint32_t* fetched) = 0;
  virtual HRESULT Skip(uint32_t count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumFilters** copy) = 0;
};

// Offered by a source filter that reads a file.
struct IFileSourceFilter : virtual IUnknown {
  static constexpr IID kIid = HostIid(13);

  virtual HRESULT Load(std::u16string_view fileName, const AM_MEDIA_TYPE* type) = 0;
  // The file's name; *type (when given) receives the type the file was opened with.
  virtual HRESULT GetCurFile(std::u16string* fileName, AM_MEDIA_TYPE* type) = 0;
};

// Offered by an audio renderer: how a graph search tells one.
struct IBasicAudio : virtual IUnknown {
  static constexpr IID kIid = HostIid(14);

  virtual HRESULT put_Volume(int32_t volume) = 0;
  virtual HRESULT get_Volume(int32_t* volume) = 0;
};

inline constexpr IID IID_IMediaFilter = IMediaFilter::kIid;
inline constexpr IID IID_IBaseFilter = IBaseFilter::kIid;
inline constexpr IID IID_IEnumFilters = IEnumFilters::kIid;
inline constexpr IID IID_IFileSourceFilter = IFileSourceFilter::kIid;
inline constexpr IID IID_IBasicAudio = IBasicAudio::kIid;

}  // namespace korvalin::host
