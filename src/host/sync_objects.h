#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace korvalin::host {

// The waitable objects a reference clock signals: what event and semaphore handles are to
// the published clock interface.
class Event {
 public:
  explicit Event(bool manualReset = false) : manualReset_(manualReset) {}
  void Set();
  void Reset();
  // True when set within the timeout; an auto-reset event is then reset again.
  bool Wait(std::chrono::milliseconds timeout);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool manualReset_;
  bool set_ = false;
};

class Semaphore {
 public:
  explicit Semaphore(int64_t count = 0) : count_(count) {}
  void Release(int64_t count = 1);
  // True when a count was taken within the timeout.
  bool Wait(std::chrono::milliseconds timeout);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int64_t count_;
};

}  // namespace korvalin::host
