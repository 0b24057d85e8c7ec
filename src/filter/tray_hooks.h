#pragma once

#include "host/unknown.h"

namespace korvalin {

// How a filter in a graph makes itself known to the desktop (its tray icon, its stream on
// the session bus). The module installs an implementation; without one nothing is shown
// and the filter plays on.
class TrayHooks {
 public:
  virtual ~TrayHooks() = default;
  // The filter joined a graph; `showIcon` is its SysTrayIcon setting.
  virtual void StartTray(host::IUnknown* filter, bool showIcon) = 0;
  // The filter leaves its graph or is destroyed; called once per StartTray.
  virtual void StopTray(host::IUnknown* filter) = 0;
};

// Process-wide; null removes them. The hooks must outlive every filter.
void SetTrayHooks(TrayHooks* hooks);
TrayHooks* CurrentTrayHooks();

}  // namespace korvalin
