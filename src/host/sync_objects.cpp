#include "host/sync_objects.h"

namespace korvalin::host {

// Notifying under the lock: a waiter may destroy the object as soon as it can see the change.
void Event::Set() {
  std::lock_guard lock(mutex_);
  set_ = true;
  changed_.notify_all();
}

void Event::Reset() {
  std::lock_guard lock(mutex_);
  set_ = false;
}

bool Event::Wait(std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, timeout, [this] { return set_; })) return false;
  if (!manualReset_) set_ = false;
  return true;
}

void Semaphore::Release(int64_t count) {
  std::lock_guard lock(mutex_);
  count_ += count;
  changed_.notify_all();
}

bool Semaphore::Wait(std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, timeout, [this] { return count_ > 0; })) return false;
  --count_;
  return true;
}

}  // namespace korvalin::host
