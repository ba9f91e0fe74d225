#include "ship/otlp/json_form.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <variant>

namespace qzlog_ship {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

void append_escaped(unsigned char byte, std::string& out) {
  switch (byte) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      out += "\\u00";
      out += kHexDigits[byte >> 4U];
      out += kHexDigits[byte & 15U];
  }
}

void append_text(std::string_view text, std::string& out) {
  out += '"';
  std::size_t copied = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x20 && byte != '"' && byte != '\\') continue;
    out.append(text, copied, at - copied);
    append_escaped(byte, out);
    copied = at + 1;
  }
  out.append(text, copied);
  out += '"';
}

template <class Number>
void append_number(Number number, std::string& out) {
  char digits[64];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

/// 64 bits do not fit numbers of JSON.
template <class Integer>
void append_quoted(Integer number, std::string& out) {
  out += '"';
  append_number(number, out);
  out += '"';
}

void append_double(double number, std::string& out) {
  if (std::isnan(number)) {
    out += "\"NaN\"";
  } else if (std::isinf(number)) {
    out += number > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  } else {
    append_number(number, out);
  }
}

void append_base64(std::string_view bytes, std::string& out) {
  static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  out += '"';
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::string_view group = bytes.substr(at, 3);
    std::uint32_t bits = 0;
    for (std::size_t place = 0; place < 3; ++place) {
      bits = bits << 8U | (place < group.size() ? static_cast<unsigned char>(group[place]) : 0U);
    }
    for (std::size_t place = 0; place < 4; ++place) {
      out += place <= group.size() ? kDigits[bits >> (18U - 6U * place) & 63U] : '=';
    }
  }
  out += '"';
}

template <class Bytes>
void append_hexadecimal(const Bytes& bytes, std::string& out) {
  out += '"';
  for (const unsigned char byte : bytes) {
    out += kHexDigits[byte >> 4U];
    out += kHexDigits[byte & 15U];
  }
  out += '"';
}

struct ValueWriter {
  std::string& out;

  void operator()(std::string_view text) const {
    out += "{\"stringValue\":";
    append_text(text, out);
  }
  void operator()(bool value) const { out += value ? "{\"boolValue\":true" : "{\"boolValue\":false"; }
  void operator()(std::int64_t value) const {
    out += "{\"intValue\":";
    append_quoted(value, out);
  }
  void operator()(double value) const {
    out += "{\"doubleValue\":";
    append_double(value, out);
  }
  void operator()(const LogBytes& value) const {
    out += "{\"bytesValue\":";
    append_base64(value.bytes, out);
  }
};

void append_attribute(std::string_view name, const LogValue& value, std::string& out) {
  out += "{\"key\":";
  append_text(name, out);
  out += ",\"value\":";
  std::visit(ValueWriter{out}, value);
  out += "}},";
}

/// What was written as "a,b," becomes "a,b".
void drop_comma(std::string& out) {
  if (out.back() == ',') out.pop_back();
}

}  // namespace

// With a comma behind it.
void JsonForm::append_record(const LogRecord& record, std::string& run) const {
  run += '{';
  if (record.nanoseconds != 0) {
    run += "\"timeUnixNano\":";
    append_quoted(record.nanoseconds, run);
    run += ',';
  }
  run += "\"observedTimeUnixNano\":";
  append_quoted(record.observed_nanoseconds, run);
  if (record.severity_number != 0) {
    run += ",\"severityNumber\":";
    append_number(record.severity_number, run);
    run += ",\"severityText\":";
    append_text(record.severity_text, run);
  }
  if (!record.event_name.empty()) {
    run += ",\"eventName\":";
    append_text(record.event_name, run);
  }
  if (record.body) {
    run += ",\"body\":";
    std::visit(ValueWriter{run}, LogValue(*record.body));
    run += '}';
  }
  run += ",\"attributes\":[";
  for (const LogAttribute& attribute : record.attributes) append_attribute(attribute.name, attribute.value, run);
  drop_comma(run);
  run += ']';
  if (record.trace_id) {
    run += ",\"traceId\":";
    append_hexadecimal(*record.trace_id, run);
  }
  if (record.span_id) {
    run += ",\"spanId\":";
    append_hexadecimal(*record.span_id, run);
  }
  run += "},";
}

void JsonForm::begin(std::string& request) const { request += "{\"resourceLogs\":["; }

void JsonForm::append_run(const LogResource& resource, const LogScope& scope, std::string_view run,
                          std::string& request) const {
  request += "{\"resource\":{\"attributes\":[";
  if (!resource.service_name.empty()) append_attribute("service.name", resource.service_name, request);
  if (!resource.host_name.empty()) append_attribute("host.name", resource.host_name, request);
  drop_comma(request);
  request += "]},\"scopeLogs\":[{\"scope\":{\"name\":";
  append_text(scope.name, request);
  request += ",\"version\":";
  append_text(scope.version, request);
  request += "},\"logRecords\":[";
  request += run;
  drop_comma(request);
  request += "]}]},";
}

void JsonForm::end(std::string& request) const {
  drop_comma(request);
  request += "]}";
}

}  // namespace qzlog_ship
