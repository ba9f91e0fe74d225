#include "ship/otlp/record_mapping.h"

#include <charconv>
#include <cstddef>

#include "ship/otlp/utf8_check.h"
#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

constexpr Severity kSeverities[] = {{5, "debug"},    {6, "debug"},    {9, "info"},   {10, "info"},     {11, "notice"},
                                    {13, "warning"}, {14, "warning"}, {17, "error"}, {18, "critical"}, {19, "alert"}};

/// Up to so many names are compared one by one.
constexpr std::size_t kFewNames = 16;

/// What we add ourselves.
bool is_reserved(std::string_view name) { return name.starts_with("qzlog.") || name == "event.name"; }

LogValue text_or_bytes(std::string_view text) {
  if (is_utf8(text)) return text;
  return LogBytes{text};
}

LogValue value_of(const qzlog_value& value) {
  switch (value.kind) {
    case QZLOG_BOOL:
      return value.integer != 0;
    case QZLOG_INTEGER:
      return value.integer;
    case QZLOG_NUMBER:
      return value.number;
    default:
      return text_or_bytes(view_of(value.text));
  }
}

/// False where it is not as many digits, or all of them are 0.
template <class Id>
bool parse_id(std::string_view digits, Id& id) {
  if (digits.size() != 2 * id.size()) return false;
  bool is_set = false;
  for (std::size_t at = 0; at < id.size(); ++at) {
    const char* const begin = digits.data() + 2 * at;
    const auto [stopped, error] = std::from_chars(begin, begin + 2, id[at], 16);
    if (error != std::errc() || stopped != begin + 2) return false;
    is_set = is_set || id[at] != 0;
  }
  return is_set;
}

/// "qzlog-ship/1.0.0 HOST"
std::string_view host_of_client(std::string_view client) {
  const std::size_t blank = client.find(' ');
  return blank == std::string_view::npos ? std::string_view() : client.substr(blank + 1);
}

}  // namespace

Severity severity_of(std::int32_t level) noexcept {
  if (level < 0 || level >= static_cast<std::int32_t>(std::size(kSeverities))) return {};
  return kSeverities[level];
}

RecordMapping::RecordMapping(MappingChoices choices, const qzlog_host& host, std::string_view client)
    : choices_(std::move(choices)), host_(host), own_host_(host_of_client(client)) {}

// Logs that are shipped may be another host's.
LogResource RecordMapping::resource_of(const qzlog_record& record) const {
  const std::string_view writer = view_of(record.writer);
  const std::size_t slash = writer.find('/');
  const bool names_host = slash != std::string_view::npos && slash != 0;
  const std::string_view host = names_host ? writer.substr(0, slash) : std::string_view(own_host_);
  const std::string_view product = view_of(record.product);
  return {is_utf8(product) ? product : std::string_view(), is_utf8(host) ? host : std::string_view()};
}

const LogRecord& RecordMapping::map(const qzlog_record& record, std::uint64_t now) {
  std::vector<LogAttribute> attributes = std::move(log_.attributes);
  attributes.clear();
  log_ = LogRecord();
  log_.attributes = std::move(attributes);
  std::int64_t moment = 0;
  if (host_.moment(host_.context, &record, &moment) != 0 && moment > 0) {
    log_.nanoseconds = static_cast<std::uint64_t>(moment);
  }
  log_.observed_nanoseconds = now;
  const Severity severity = severity_of(record.level);
  log_.severity_number = severity.number;
  log_.severity_text = severity.text;
  if (is_utf8(view_of(record.event))) log_.event_name = view_of(record.event);
  find_id(record, choices_.trace_attribute, log_.trace_id);
  find_id(record, choices_.span_attribute, log_.span_id);
  // Before the attributes, whose texts the host keeps until it is asked for something else.
  if (choices_.body) add_body(record);
  add_attributes(record);
  add_own(record);
  return log_;
}

void RecordMapping::add_body(const qzlog_record& record) {
  qzlog_text body = {};
  if (host_.body(host_.context, &record, &body) == 0) return;
  body_ = view_of(body);
  if (is_utf8(body_)) log_.body = body_;
}

void RecordMapping::add_attributes(const qzlog_record& record) {
  std::size_t count = 0;
  const qzlog_attribute* const attributes = host_.attributes(host_.context, &record, &count);
  many_names_.clear();
  for (std::size_t at = 0; attributes != nullptr && at < count; ++at) {
    const std::string_view name = view_of(attributes[at].name);
    if (attributes[at].value.kind == QZLOG_ABSENT || is_reserved(name) || !is_utf8(name) || !is_new(name)) continue;
    log_.attributes.push_back({name, value_of(attributes[at].value)});
  }
}

// Names of OTLP are unique; lines that other programs wrote may have one twice.
bool RecordMapping::is_new(std::string_view name) {
  if (log_.attributes.size() < kFewNames) {
    for (const LogAttribute& attribute : log_.attributes) {
      if (attribute.name == name) return false;
    }
    return true;
  }
  if (many_names_.empty()) {
    for (const LogAttribute& attribute : log_.attributes) many_names_.insert(attribute.name);
  }
  return many_names_.insert(name).second;
}

void RecordMapping::add_own(const qzlog_record& record) {
  if (choices_.event_name_attribute && !log_.event_name.empty()) {
    log_.attributes.push_back({"event.name", log_.event_name});
  }
  if (record.id != 0) log_.attributes.push_back({"qzlog.id", std::int64_t{record.id}});
  if (record.level >= 0) log_.attributes.push_back({"qzlog.level", std::int64_t{record.level}});
  log_.attributes.push_back({"qzlog.identity", text_or_bytes(view_of(record.identity))});
  log_.attributes.push_back({"qzlog.entry", text_or_bytes(view_of(record.line))});
}

template <class Id>
void RecordMapping::find_id(const qzlog_record& record, const std::string& attribute, std::optional<Id>& id) const {
  if (attribute.empty()) return;
  const qzlog_value value = host_.find_attribute(host_.context, &record, attribute.c_str());
  if (value.kind == QZLOG_ABSENT) return;
  Id parsed = {};
  if (value.kind == QZLOG_TEXT && parse_id(view_of(value.text), parsed)) {
    id = parsed;
    return;
  }
  const std::string text = "some entries have no " + std::to_string(2 * parsed.size()) + " hexadecimal digits in '" +
                           attribute + "', or zeros alone: they are sent without, the attribute as it is";
  host_.warn(host_.context, text.c_str());
}

}  // namespace qzlog_ship
