#include "foundation/locks.h"

using namespace qzlog;

namespace {
constinit Mutex global_mutex;
}

qz_THREAD_global_lock::qz_THREAD_global_lock() : hold_(global_mutex) {}
