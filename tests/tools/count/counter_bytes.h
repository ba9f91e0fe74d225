#ifndef QZLOG_TESTS_TOOLS_COUNT_COUNTER_BYTES_H
#define QZLOG_TESTS_TOOLS_COUNT_COUNTER_BYTES_H

#include <cstdint>
#include <initializer_list>
#include <string>

namespace qzlog_test {

struct CounterBytes {
  std::int32_t year;
  std::int32_t month;
  std::int32_t day;
  std::int32_t key;
  std::uint32_t count;
  std::int32_t record_size = 32;
};

/// A record as it stands in a counter file.
inline std::string counter_bytes(const CounterBytes& record) {
  const auto word = [](std::int32_t value) { return static_cast<std::uint32_t>(value); };
  std::string bytes;
  for (const std::uint32_t field : {word(record.record_size), word(record.year), word(record.month), word(record.day),
                                    word(record.key), record.count, 0U, 0U}) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(field >> shift & 0xFF);
  }
  return bytes;
}

inline std::string counter_bytes(std::initializer_list<CounterBytes> records) {
  std::string bytes;
  for (const CounterBytes& record : records) bytes += counter_bytes(record);
  return bytes;
}

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_COUNT_COUNTER_BYTES_H
