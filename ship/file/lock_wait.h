#ifndef QZLOG_SHIP_FILE_LOCK_WAIT_H
#define QZLOG_SHIP_FILE_LOCK_WAIT_H

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

/// Tries to lock a file until it has the lock: for five seconds, for anybody who may read the file can lock it and keep
/// it so. `try_to_lock` gives 0, or sets errno. Fails for now.
template <class TryToLock>
void wait_for_lock(const std::string& path, const TryToLock& try_to_lock) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(5);
  while (try_to_lock() != 0) {
    if (errno == EINTR) continue;
    const bool is_held = errno == EWOULDBLOCK || errno == EAGAIN || errno == EACCES;
    if (!is_held) fail_for_now("cannot lock '" + path + "'");
    if (Clock::now() >= end) fail_for_now("somebody else has locked '" + path + "'");
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_FILE_LOCK_WAIT_H
