#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "host/com_ptr.h"
#include "host/filter_interfaces.h"
#include "host/filter_registry.h"
#include "host/graph_interfaces.h"
#include "host/pin_interfaces.h"
#include "host/unknown.h"

namespace korvalin::host {

// The graph: owns its filters, connects their pins, changes their state together and
// gathers their events. Filters change state downstream first (renderers before the
// sources that feed them). The graph lock is re-entrant, so a filter may edit the graph
// from inside a connection or a clock change the graph is making.
class FilterGraph : public UnknownBase,
                    public IFilterGraph2,
                    public IMediaControl,
                    public IMediaFilter,
                    public IMediaEvent,
                    public IMediaEventSink,
                    public IMediaPosition {
 public:
  // Intelligent connection draws on `registry`.
  explicit FilterGraph(const FilterRegistry* registry = &FilterRegistry::Process());
  ~FilterGraph() override;

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override;

  // IFilterGraph
  // S_OK, or VFW_S_DUPLICATE_NAME when the name was taken and a number was added; the
  // filter's refusal to join is returned as it is.
  HRESULT AddFilter(IBaseFilter* filter, std::u16string_view name) override;
  HRESULT RemoveFilter(IBaseFilter* filter) override;
  HRESULT EnumFilters(IEnumFilters** filters) override;
  HRESULT FindFilterByName(std::u16string_view name, IBaseFilter** filter) override;
  // VFW_E_NOT_IN_GRAPH when a pin's filter is not in this graph, VFW_E_NOT_STOPPED while
  // the graph streams.
  HRESULT ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) override;
  HRESULT Reconnect(IPin* pin) override;
  HRESULT Disconnect(IPin* pin) override;
  // The clock of the first filter (downstream first) that offers one, else a real-time
  // ReferenceClock of the graph's own.
  HRESULT SetDefaultSyncSource() override;

  // IGraphBuilder
  HRESULT Connect(IPin* output, IPin* input) override;
  HRESULT Render(IPin* output) override;
  // IFilterGraph2
  HRESULT ReconnectEx(IPin* pin, const AM_MEDIA_TYPE* type) override;

  // IMediaControl and IMediaFilter. Pause from stopped picks a clock when none was set.
  HRESULT Run() override;
  HRESULT Run(REFERENCE_TIME start) override;
  HRESULT Pause() override;
  HRESULT Stop() override;
  HRESULT GetState(int32_t timeoutMs, int32_t* state) override;
  HRESULT GetState(uint32_t timeoutMs, FILTER_STATE* state) override;
  // Hands the clock (null: none, run as fast as the data comes) to every filter.
  HRESULT SetSyncSource(IReferenceClock* clock) override;
  HRESULT GetSyncSource(IReferenceClock** clock) override;

  // IMediaEvent and IMediaEventSink
  HRESULT GetEvent(int32_t* code, intptr_t* param1, intptr_t* param2, int32_t timeoutMs) override;
  HRESULT WaitForCompletion(int32_t timeoutMs, int32_t* code) override;
  HRESULT Notify(int32_t code, intptr_t param1, intptr_t param2) override;

  // IMediaPosition: the longest duration a filter of the graph reports.
  HRESULT get_Duration(double* seconds) override;

 private:
  struct Member {
    ComPtr<IBaseFilter> filter;
    std::u16string name;
  };
  struct PendingReconnect {
    ComPtr<IPin> pin;
    bool hasType;
    AM_MEDIA_TYPE type;
  };
  struct GraphEvent {
    int32_t code;
    intptr_t param1, param2;
  };

  bool Contains(IBaseFilter* filter) const;
  bool NameTaken(std::u16string_view name) const;
  std::u16string UniqueName(std::u16string_view name) const;
  void DisconnectAll(IBaseFilter* filter);
  // The filters, each before the filters that feed it.
  std::vector<ComPtr<IBaseFilter>> DownstreamFirst() const;
  std::vector<ComPtr<IBaseFilter>> Snapshot() const;
  void ResetCompletion();
  // Runs a connection; reconnections asked for meanwhile run once the outermost is done.
  HRESULT WhileConnecting(const std::function<HRESULT()>& connect);
  HRESULT ReconnectNow(const PendingReconnect& reconnect);
  // Changes every filter's state, downstream first; the first failure stops the graph.
  HRESULT ChangeState(FILTER_STATE target, const std::function<HRESULT(IBaseFilter*)>& change);

  // Intelligent connection (graph_builder.cpp). `target` null renders.
  HRESULT ConnectThrough(IPin* output, IPin* target, int depth);
  // Tries the filters in the graph not tried yet, adding them to `tried`.
  HRESULT ConnectThroughGraph(IPin* output, IPin* target, int depth, std::set<IBaseFilter*>* tried);
  HRESULT ConnectThroughFilter(IPin* output, IBaseFilter* filter, IPin* target, int depth);
  HRESULT ContinueFrom(IBaseFilter* filter, IPin* target, int depth);

  const FilterRegistry* registry_;
  std::recursive_mutex lock_;
  std::vector<Member> filters_;
  std::atomic<FILTER_STATE> state_{State_Stopped};
  ComPtr<IReferenceClock> clock_;
  bool clockChosen_ = false;
  int connecting_ = 0;
  std::deque<PendingReconnect> pendingReconnects_;

  std::mutex eventLock_;
  std::condition_variable eventArrived_;
  std::deque<GraphEvent> events_;
  int renderersLeft_ = 0;
  bool completed_ = false;
  int32_t completionCode_ = 0;
};

}  // namespace korvalin::host
