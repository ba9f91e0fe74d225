#ifndef QZLOG_SHIP_OTLP_LOG_RECORD_H
#define QZLOG_SHIP_OTLP_LOG_RECORD_H

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace qzlog_ship {

/// What is not UTF-8, or need not be.
struct LogBytes {
  std::string_view bytes;
};

/// AnyValue, as far as entries have such values. A text is UTF-8.
using LogValue = std::variant<std::string_view, bool, std::int64_t, double, LogBytes>;

struct LogAttribute {
  std::string_view name;
  LogValue value;
};

using TraceId = std::array<unsigned char, 16>;
using SpanId = std::array<unsigned char, 8>;

/// LogRecord of OTLP. The texts are the host's, and valid as long as it says.
struct LogRecord {
  std::uint64_t nanoseconds = 0;           // since 1970; 0: not known
  std::uint64_t observed_nanoseconds = 0;  // when the shipper sent it
  int severity_number = 0;                 // 0: not known
  std::string_view severity_text;
  std::string_view event_name;
  std::optional<std::string_view> body;
  std::optional<TraceId> trace_id;
  std::optional<SpanId> span_id;
  std::vector<LogAttribute> attributes;  // no name stands there twice
};

/// Whom records are from.
struct LogResource {
  std::string_view service_name;  // left out where it is empty, as is the host's
  std::string_view host_name;

  bool operator==(const LogResource&) const = default;
};

/// What wrote the records: the library's own name, and the version of the shipper.
struct LogScope {
  std::string_view name;
  std::string_view version;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_LOG_RECORD_H
