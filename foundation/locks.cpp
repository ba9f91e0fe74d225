#include "foundation/locks.h"

#include <mutex>

namespace {
constinit std::mutex global_mutex;
}

qz_LOG_CRWLock::qz_LOG_CRWLock(void* /*attributes*/) {}

qz_THREAD_global_lock::qz_THREAD_global_lock() { global_mutex.lock(); }

qz_THREAD_global_lock::~qz_THREAD_global_lock() { global_mutex.unlock(); }
