#ifndef QZLOG_FOUNDATION_LOCKS_H
#define QZLOG_FOUNDATION_LOCKS_H

#include <mutex>
#include <shared_mutex>

#include "foundation/fork_gate.h"
#include "foundation/no_copies.h"

/// The locks of the library. None is held by another thread when a process forks, so that none is left behind locked.

namespace qzlog {
class WriterAttempt;
}

/// Many readers or one writer. A thread that holds one side never asks for the other.
class qz_LOG_CRWLock : public qz_UTIL_no_inadvertant_copies {
 public:
  /// The attributes are always null; the parameter is part of the callers' form.
  explicit constexpr qz_LOG_CRWLock(void* /*attributes*/) {}

 private:
  friend class qz_LOG_CReaderSentry;
  friend class qz_LOG_CWriterSentry;
  friend class qzlog::WriterAttempt;
  std::shared_mutex mutex_;
};

/// Holds shared access as long as it lives.
class qz_LOG_CReaderSentry : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit qz_LOG_CReaderSentry(qz_LOG_CRWLock& lock) : hold_(lock.mutex_) {}

 private:
  qzlog::ForkDelay fork_delay_;
  std::shared_lock<std::shared_mutex> hold_;
};

/// Holds exclusive access as long as it lives.
class qz_LOG_CWriterSentry : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit qz_LOG_CWriterSentry(qz_LOG_CRWLock& lock) : hold_(lock.mutex_) {}

 private:
  qzlog::ForkDelay fork_delay_;
  std::unique_lock<std::shared_mutex> hold_;
};

namespace qzlog {

/// Holds exclusive access as long as it lives, if that was free.
class WriterAttempt : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit WriterAttempt(qz_LOG_CRWLock& lock) : hold_(lock.mutex_, std::try_to_lock) {}
  explicit operator bool() const { return hold_.owns_lock(); }

 private:
  ForkDelay fork_delay_;
  std::unique_lock<std::shared_mutex> hold_;
};

/// One holder. Never taken twice by one thread.
class Mutex : public qz_UTIL_no_inadvertant_copies {
 public:
  constexpr Mutex() = default;

 private:
  friend class MutexSentry;
  std::mutex mutex_;
};

/// Holds a mutex as long as it lives.
class MutexSentry : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit MutexSentry(Mutex& mutex) : hold_(mutex.mutex_) {}

 private:
  ForkDelay fork_delay_;
  std::lock_guard<std::mutex> hold_;
};

}  // namespace qzlog

/// Holds the one process-wide mutex, the guard of the global settings. Never taken twice by one thread.
class qz_THREAD_global_lock : public qz_UTIL_no_inadvertant_copies {
 public:
  qz_THREAD_global_lock();

 private:
  qzlog::MutexSentry hold_;
};

#endif  // QZLOG_FOUNDATION_LOCKS_H
