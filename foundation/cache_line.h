#ifndef QZLOG_FOUNDATION_CACHE_LINE_H
#define QZLOG_FOUNDATION_CACHE_LINE_H

#include <cstddef>

namespace qzlog {

/// What one thread writes all the time begins and ends at a multiple of this, so that no thread that only reads what
/// lies beside it has to fetch the line again. True of the processors that Linux runs on; on others it costs speed
/// alone.
constexpr std::size_t kCacheLine = 64;

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_CACHE_LINE_H
