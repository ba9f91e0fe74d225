#ifndef QZLOG_BENCH_BIG_ENDIAN_H
#define QZLOG_BENCH_BIG_ENDIAN_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qzlog_bench {

/// Writes an integer as the library's files hold it.
inline void put_int4(std::string& bytes, std::size_t offset, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<char>(value >> (24 - 8 * i));
}

inline void append_int4(std::string& bytes, std::uint32_t value) {
  bytes.append(4, '\0');
  put_int4(bytes, bytes.size() - 4, value);
}

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_BIG_ENDIAN_H
