#ifndef QZLOG_FOUNDATION_SHORTEST_FLOAT_H
#define QZLOG_FOUNDATION_SHORTEST_FLOAT_H

#include <cstddef>

namespace qzlog {

/// The most characters that write_shortest_float writes.
constexpr std::size_t kMaxShortestFloat = 32;

/// Writes the fewest digits that read back as exactly this number, and returns the end; no terminator. The text is a
/// JSON number with a point, an exponent or both, so that it is told apart from an integer: "0.875", "3.0", "1e+300",
/// "-0.0". Whatever the locale and the rounding mode. `value` is finite.
char* write_shortest_float(char* target, double value);

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_SHORTEST_FLOAT_H
