#ifndef QZLOG_SINKS_SERIES_LOCK_H
#define QZLOG_SINKS_SERIES_LOCK_H

#include <pthread.h>
#include <sys/types.h>

#include <cstdint>
#include <string>

#include "foundation/descriptor.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// What the processes that write one log have in common: a page of a file beside it, which each has mapped. Its mutex
/// costs no system call unless two want it at once, and tells who comes next when its holder was killed.
class SeriesLock : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Guarded by the mutex.
  struct Page {
    char magic[16];
    pthread_mutex_t mutex;
    std::uint32_t day;       // of the file that is written to, 0 while none is; as a number YYYYMMDD
    std::uint32_t sequence;  // of that file
    std::uint64_t size;      // of that file, as far as writers of the series made it
    std::uint32_t is_torn;   // the file ends in a part of a line, which nobody could cut off
  };

  SeriesLock() = default;
  ~SeriesLock() { close(); }

  /// False where the folder takes no such file, or one is there that does not belong to this version or this kind of
  /// host: the log is then written without.
  bool open(const std::string& path, mode_t permissions);
  void close();
  bool is_open() const { return page_ != nullptr; }
  Page* page() const { return page_; }

 private:
  friend class SeriesHold;
  enum class State { kNotHeld, kHeld, kAfterDeath };

  State lock() noexcept {
    if (page_ == nullptr) return State::kNotHeld;
    const int error = pthread_mutex_trylock(&page_->mutex);
    return error == 0 ? State::kHeld : wait_for_lock(error);
  }
  /// An attempt has ended with `error`.
  State wait_for_lock(int error) noexcept;
  bool open_file(const std::string& path, mode_t permissions);
  bool enter();
  bool map();

  Descriptor file_;
  Page* page_ = nullptr;
};

/// Holds the lock as long as it lives; not when another process keeps it for longer than a second.
class SeriesHold : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit SeriesHold(SeriesLock& lock) : lock_(lock), state_(lock.lock()) {}
  ~SeriesHold() {
    if (is_held()) pthread_mutex_unlock(&lock_.page_->mutex);
  }

  bool is_held() const { return state_ != SeriesLock::State::kNotHeld; }
  /// Whether the last holder was killed meanwhile: it may have left a part of a line.
  bool is_after_death() const { return state_ == SeriesLock::State::kAfterDeath; }
  /// Null while the lock is not held.
  SeriesLock::Page* page() const { return is_held() ? lock_.page_ : nullptr; }

 private:
  SeriesLock& lock_;
  const SeriesLock::State state_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SERIES_LOCK_H
