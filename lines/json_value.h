#ifndef QZLOG_LINES_JSON_VALUE_H
#define QZLOG_LINES_JSON_VALUE_H

#include <cstdint>
#include <string_view>

namespace qzlog {

enum class JsonKind : std::uint8_t {
  kNull,
  kBool,
  kInteger,
  kLargeInteger,  // above INT64_MAX
  kFloat,
  kText,
  kArray,
  kObject,
};

/// What an error text calls a value: "a text", "an integer" ...
std::string_view kind_name(JsonKind kind);

/// A value as it stands in JSON, without what an array or an object holds.
struct JsonValue {
  JsonKind kind = JsonKind::kNull;
  bool negative_zero = false;  ///< the integer -0, which is another number than 0 as a double
  union {
    std::int64_t integer = 0;
    std::uint64_t large_integer;
    double number;  ///< kFloat
    bool truth;
  };
  std::string_view text;  ///< a zero byte stands behind it
};

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_VALUE_H
