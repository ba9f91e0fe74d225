#include "ship/otlp/protobuf_form.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <variant>

#include "ship/otlp/protobuf_wire.h"

namespace qzlog_ship {

namespace {

// The numbers of fields, as OTLP 1 has them.
namespace any_value {
constexpr unsigned kString = 1;
constexpr unsigned kBool = 2;
constexpr unsigned kInteger = 3;
constexpr unsigned kDouble = 4;
constexpr unsigned kBytes = 7;
}  // namespace any_value
namespace key_value {
constexpr unsigned kKey = 1;
constexpr unsigned kValue = 2;
}  // namespace key_value
namespace log_record {
constexpr unsigned kTime = 1;
constexpr unsigned kSeverityNumber = 2;
constexpr unsigned kSeverityText = 3;
constexpr unsigned kBody = 5;
constexpr unsigned kAttributes = 6;
constexpr unsigned kTraceId = 9;
constexpr unsigned kSpanId = 10;
constexpr unsigned kObservedTime = 11;
constexpr unsigned kEventName = 12;
}  // namespace log_record
namespace scope_logs {
constexpr unsigned kScope = 1;
constexpr unsigned kRecords = 2;
}  // namespace scope_logs
namespace resource_logs {
constexpr unsigned kResource = 1;
constexpr unsigned kScopeLogs = 2;
}  // namespace resource_logs
constexpr unsigned kResourceAttributes = 1;
constexpr unsigned kScopeName = 1;
constexpr unsigned kScopeVersion = 2;
constexpr unsigned kRequestResourceLogs = 1;

constexpr std::size_t kFixed64FieldSize = 1 + 8;

struct ValueSize {
  std::size_t operator()(std::string_view text) const { return bytes_field_size(text.size()); }
  std::size_t operator()(const LogBytes& value) const { return bytes_field_size(value.bytes.size()); }
  std::size_t operator()(bool /*value*/) const { return 2; }
  std::size_t operator()(std::int64_t value) const { return 1 + varint_size(static_cast<std::uint64_t>(value)); }
  std::size_t operator()(double /*value*/) const { return kFixed64FieldSize; }
};

/// Writes one of a oneof, which stands there also where it is 0 or empty.
struct ValueWriter {
  std::string& out;

  void operator()(std::string_view text) const { append_bytes_field(any_value::kString, text, out); }
  void operator()(const LogBytes& value) const { append_bytes_field(any_value::kBytes, value.bytes, out); }
  void operator()(bool value) const { append_varint_field(any_value::kBool, value ? 1 : 0, out); }
  void operator()(std::int64_t value) const {
    append_varint_field(any_value::kInteger, static_cast<std::uint64_t>(value), out);
  }
  void operator()(double value) const {
    append_fixed64_field(any_value::kDouble, std::bit_cast<std::uint64_t>(value), out);
  }
};

void append_message_head(unsigned field, std::size_t size, std::string& out) {
  append_tag(field, WireType::kBytes, out);
  append_varint(size, out);
}

std::size_t attribute_size(std::string_view name, std::size_t value_size) {
  return bytes_field_size(name.size()) + bytes_field_size(value_size);
}

void append_attribute(unsigned field, std::string_view name, const LogValue& value, std::string& out) {
  const std::size_t value_size = std::visit(ValueSize{}, value);
  append_message_head(field, attribute_size(name, value_size), out);
  append_bytes_field(key_value::kKey, name, out);
  append_message_head(key_value::kValue, value_size, out);
  std::visit(ValueWriter{out}, value);
}

std::size_t text_field_size(std::string_view text) { return text.empty() ? 0 : bytes_field_size(text.size()); }

std::size_t record_size(const LogRecord& record) {
  std::size_t size = kFixed64FieldSize + text_field_size(record.severity_text) + text_field_size(record.event_name);
  if (record.nanoseconds != 0) size += kFixed64FieldSize;
  if (record.severity_number != 0) size += 2;
  if (record.body) size += bytes_field_size(bytes_field_size(record.body->size()));
  if (record.trace_id) size += bytes_field_size(record.trace_id->size());
  if (record.span_id) size += bytes_field_size(record.span_id->size());
  for (const LogAttribute& attribute : record.attributes) {
    size += bytes_field_size(attribute_size(attribute.name, std::visit(ValueSize{}, attribute.value)));
  }
  return size;
}

void append_text_field(unsigned field, std::string_view text, std::string& out) {
  if (!text.empty()) append_bytes_field(field, text, out);
}

template <class Id>
void append_id(unsigned field, const Id& id, std::string& out) {
  if (id) append_bytes_field(field, {reinterpret_cast<const char*>(id->data()), id->size()}, out);
}

/// Resource as a field of ResourceLogs.
void append_resource(const LogResource& resource, std::string& out) {
  std::string attributes;
  if (!resource.service_name.empty()) {
    append_attribute(kResourceAttributes, "service.name", resource.service_name, attributes);
  }
  if (!resource.host_name.empty()) append_attribute(kResourceAttributes, "host.name", resource.host_name, attributes);
  append_bytes_field(resource_logs::kResource, attributes, out);
}

/// InstrumentationScope as a field of ScopeLogs.
void append_scope(const LogScope& scope, std::string& out) {
  std::string texts;
  append_text_field(kScopeName, scope.name, texts);
  append_text_field(kScopeVersion, scope.version, texts);
  append_bytes_field(scope_logs::kScope, texts, out);
}

}  // namespace

void ProtobufForm::append_record(const LogRecord& record, std::string& run) const {
  append_message_head(scope_logs::kRecords, record_size(record), run);
  if (record.nanoseconds != 0) append_fixed64_field(log_record::kTime, record.nanoseconds, run);
  if (record.severity_number != 0) {
    append_varint_field(log_record::kSeverityNumber, static_cast<std::uint64_t>(record.severity_number), run);
  }
  append_text_field(log_record::kSeverityText, record.severity_text, run);
  if (record.body) {
    append_message_head(log_record::kBody, bytes_field_size(record.body->size()), run);
    append_bytes_field(any_value::kString, *record.body, run);
  }
  for (const LogAttribute& attribute : record.attributes) {
    append_attribute(log_record::kAttributes, attribute.name, attribute.value, run);
  }
  append_id(log_record::kTraceId, record.trace_id, run);
  append_id(log_record::kSpanId, record.span_id, run);
  append_fixed64_field(log_record::kObservedTime, record.observed_nanoseconds, run);
  append_text_field(log_record::kEventName, record.event_name, run);
}

void ProtobufForm::append_run(const LogResource& resource, const LogScope& scope, std::string_view run,
                              std::string& request) const {
  std::string resource_field;
  append_resource(resource, resource_field);
  std::string scope_field;
  append_scope(scope, scope_field);
  const std::size_t logs_size = scope_field.size() + run.size();
  append_message_head(kRequestResourceLogs, resource_field.size() + bytes_field_size(logs_size), request);
  request += resource_field;
  append_message_head(resource_logs::kScopeLogs, logs_size, request);
  request += scope_field;
  request += run;
}

}  // namespace qzlog_ship
