#ifndef QZLOG_FOUNDATION_LOCKS_H
#define QZLOG_FOUNDATION_LOCKS_H

#include <mutex>
#include <shared_mutex>

#include "foundation/no_copies.h"

/// Many readers or one writer. A thread that holds one side never asks for the other.
class qz_LOG_CRWLock : public qz_UTIL_no_inadvertant_copies {
 public:
  /// The attributes are always null; the parameter is part of the callers' form.
  explicit qz_LOG_CRWLock(void* attributes);

 private:
  friend class qz_LOG_CReaderSentry;
  friend class qz_LOG_CWriterSentry;
  std::shared_mutex mutex_;
};

/// Holds shared access as long as it lives.
class qz_LOG_CReaderSentry : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit qz_LOG_CReaderSentry(qz_LOG_CRWLock& lock) : hold_(lock.mutex_) {}

 private:
  std::shared_lock<std::shared_mutex> hold_;
};

/// Holds exclusive access as long as it lives.
class qz_LOG_CWriterSentry : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit qz_LOG_CWriterSentry(qz_LOG_CRWLock& lock) : hold_(lock.mutex_) {}

 private:
  std::unique_lock<std::shared_mutex> hold_;
};

/// Holds the one process-wide mutex, the guard of the global settings. Never taken twice by one thread.
class qz_THREAD_global_lock : public qz_UTIL_no_inadvertant_copies {
 public:
  qz_THREAD_global_lock();
  ~qz_THREAD_global_lock();
};

#endif  // QZLOG_FOUNDATION_LOCKS_H
