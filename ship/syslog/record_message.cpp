#include "ship/syslog/record_message.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <string_view>

#include "ship/plugin/plugin_call.h"
#include "sinks/syslog_content.h"
#include "sinks/syslog_name.h"
#include "sinks/syslog_severity.h"
#include "sinks/syslog_text.h"

namespace qzlog_ship {

namespace {

constexpr std::string_view kNothing = "-";
constexpr int kUnknownLevel = 4;  // of lines that tell what was lost, too: nobody filters a notice out unseen
constexpr std::size_t kMostHost = 255;
constexpr std::size_t kMostApplication = 48;
constexpr std::size_t kMostProcess = 128;

std::string host_name() {
  char name[kMostHost + 1] = {};
  if (::gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return std::string(kNothing);
  return name;
}

/// A part of the header: what may not be there is an underscore.
void append_part(std::string_view part, std::size_t most, std::string& out) {
  part = part.substr(0, most);
  if (part.empty()) part = kNothing;
  for (const char each : part) out += each > ' ' && each <= '~' ? each : '_';
}

/// What writers of lines write: "2026-11-21T08:15:30.123456789Z".
bool is_written_moment(std::string_view text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00.000000000Z";
  return text.size() == kForm.size() && std::equal(text.begin(), text.end(), kForm.begin(), [](char each, char form) {
           return form == '0' ? each >= '0' && each <= '9' : each == form;
         });
}

template <class Number>
void append_number(Number number, std::string& out) {
  char digits[32];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

/// JSON has none of these outside of texts but blanks, and servers replace them.
bool has_control_character(std::string_view line) {
  return std::any_of(line.begin(), line.end(), [](char each) { return static_cast<unsigned char>(each) < 0x20; });
}

}  // namespace

RecordMessage::RecordMessage(const SyslogSettings& settings, const qzlog_host& host)
    : settings_(settings),
      host_(host),
      own_host_(host_name()),
      too_long_("its message would be longer than " + std::to_string(settings.largest_message_bytes) +
                " bytes: where the server takes longer ones, raise --option largest-message-bytes") {
  element_.append("[").append(qzlog::kSyslogElement).append("@").append(std::to_string(settings.enterprise_number));
}

const char* RecordMessage::append(const qzlog_record& record, std::string& out) {
  if (has_control_character(view_of(record.line))) {
    return "its line has control characters, such as a tab, which servers of syslog replace";
  }
  entry_.clear();
  qzlog::append_syslog_line(view_of(record.line), entry_);
  message_.assign(qzlog::kSyslogRoomBefore, ' ');
  append_header(record);
  take_parameters(record);
  take_text(record);
  const qzlog::SyslogContentFit fit = qzlog::append_syslog_content({.element = element_,
                                                                    .entry_head = {},
                                                                    .entry = entry_,
                                                                    .parameters = parameters_,
                                                                    .parameter_ends = parameter_ends_,
                                                                    .text = text_},
                                                                   message_.size() - qzlog::kSyslogRoomBefore,
                                                                   settings_.largest_message_bytes, message_);
  if (!fit.fit.has_entry) return too_long_.c_str();
  out.append(message_, qzlog::number_syslog_bytes(message_, 0));
  return nullptr;
}

void RecordMessage::append_header(const qzlog_record& record) {
  message_ += '<';
  const auto level = static_cast<unsigned>(record.level < 0 ? kUnknownLevel : record.level);
  append_number(settings_.facility * 8 + qzlog::syslog_severity(level), message_);
  message_ += ">1 ";
  append_moment(record);
  message_ += ' ';
  append_writer(record);
  message_ += ' ';
  const std::string_view event = view_of(record.event);
  qzlog::append_syslog_name(event.empty() ? kNothing : event, message_);
}

/// When it was written, in microseconds; when the entry was, where the line does not say the one.
void RecordMessage::append_moment(const qzlog_record& record) {
  const qzlog_value written = host_.find_member(host_.context, &record, "written");
  const std::string_view moment = view_of(written.text);
  if ((written.kind == QZLOG_TEXT || written.kind == QZLOG_TIME) && is_written_moment(moment)) {
    message_.append(moment.substr(0, moment.size() - 4)).append("Z");
    return;
  }
  std::int64_t nanoseconds = 0;
  if (host_.moment(host_.context, &record, &nanoseconds) == 0) {
    message_ += kNothing;
    return;
  }
  constexpr std::int64_t kSecond = 1'000'000'000;
  const std::int64_t fraction = ((nanoseconds % kSecond) + kSecond) % kSecond;
  const auto seconds = static_cast<std::time_t>((nanoseconds - fraction) / kSecond);
  std::tm parts = {};
  char text[64];
  ::gmtime_r(&seconds, &parts);
  message_.append(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S.", &parts));
  const std::string digits = std::to_string(1'000'000 + fraction / 1000);
  message_.append(digits, 1).append("Z");
}

/// The host, the application and the process.
void RecordMessage::append_writer(const qzlog_record& record) {
  const std::string_view writer = view_of(record.writer);
  const std::size_t start = writer.rfind('/');
  const std::size_t process = start == std::string_view::npos || start == 0 ? start : writer.rfind('/', start - 1);
  const bool is_named = process != std::string_view::npos && process != 0 && start != 0;
  append_part(is_named ? writer.substr(0, process) : std::string_view(own_host_), kMostHost, message_);
  message_ += ' ';
  append_part(settings_.application.empty() ? view_of(record.product) : std::string_view(settings_.application),
              kMostApplication, message_);
  message_ += ' ';
  append_part(is_named ? writer.substr(process + 1, start - process - 1) : kNothing, kMostProcess, message_);
}

void RecordMessage::take_parameters(const qzlog_record& record) {
  parameters_.clear();
  parameter_ends_.clear();
  std::size_t count = 0;
  const qzlog_attribute* const attributes = host_.attributes(host_.context, &record, &count);
  if (attributes == nullptr) return;
  std::for_each(attributes, attributes + count, [this](const qzlog_attribute& each) { take_parameter(each); });
}

void RecordMessage::take_parameter(const qzlog_attribute& attribute) {
  const std::string_view name = view_of(attribute.name);
  if (name.empty() || qzlog::is_own_syslog_name(name)) return;
  parameters_ += ' ';
  qzlog::append_syslog_name(name, parameters_);
  parameters_ += "=\"";
  const qzlog_value& value = attribute.value;
  switch (value.kind) {
    case QZLOG_BOOL:
      parameters_ += value.integer != 0 ? "true" : "false";
      break;
    case QZLOG_INTEGER:
      append_number(value.integer, parameters_);
      break;
    case QZLOG_NUMBER:
      append_number(value.number, parameters_);
      break;
    case QZLOG_TEXT:
    case QZLOG_TIME:
      qzlog::append_syslog_value(view_of(value.text), parameters_);
      break;
    default:
      break;
  }
  parameters_ += '"';
  parameter_ends_.push_back(parameters_.size());
}

void RecordMessage::take_text(const qzlog_record& record) {
  text_.clear();
  qzlog_text body = {};
  if (host_.body(host_.context, &record, &body) != 0) qzlog::append_syslog_message(view_of(body), text_);
}

}  // namespace qzlog_ship
