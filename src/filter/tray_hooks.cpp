#include "filter/tray_hooks.h"

#include <atomic>

namespace korvalin {
namespace {

std::atomic<TrayHooks*> installed{nullptr};

}  // namespace

void SetTrayHooks(TrayHooks* hooks) { installed = hooks; }
TrayHooks* CurrentTrayHooks() { return installed; }

}  // namespace korvalin
