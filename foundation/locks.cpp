#include "foundation/locks.h"

namespace {
constinit qz_Mutex global_mutex;
}

qz_THREAD_global_lock::qz_THREAD_global_lock() : hold_(global_mutex) {}
