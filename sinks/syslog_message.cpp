#include "sinks/syslog_message.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>

#include "foundation/itoa.h"
#include "lines/moment_text.h"
#include "sinks/syslog_content.h"
#include "sinks/syslog_name.h"
#include "sinks/syslog_severity.h"
#include "sinks/syslog_text.h"
#include "sinks/writer_name.h"

namespace qzlog {

namespace {

using Settings = qz_LOG_SyslogSinkSettings;

constexpr std::size_t kMostKept = 1U << 20;

bool is_rfc5424(const Settings& settings) {
  if (settings.form == Settings::kUsual) return settings.transport != Settings::kLocal;
  return settings.form == Settings::kRfc5424;
}

/// The program's name may be anything; a setting was checked.
std::string application_of(const Settings& settings) {
  if (!settings.application.empty()) return settings.application;
  std::string name = program_invocation_short_name;
  constexpr std::string_view kRefused = "[]:";
  const auto is_refused = [&](char each) {
    return each <= ' ' || each > '~' || kRefused.find(each) != std::string_view::npos;
  };
  std::replace_if(name.begin(), name.end(), is_refused, '_');
  return name.empty() ? "-" : name.substr(0, 48);
}

void append_number(std::size_t number, std::string& out) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace

SyslogMessage::SyslogMessage(const Settings& settings)
    : is_rfc5424_(is_rfc5424(settings)),
      has_entry_(settings.entries),
      is_counted_(settings.transport == Settings::kTcp),
      limit_(settings.largest_message_bytes),
      facility_(settings.facility) {
  const std::string process = std::to_string(getpid());
  before_event_ = " ";
  if (is_rfc5424_) {
    before_event_ += host_name() + ' ' + application_of(settings) + ' ' + process + ' ';
  } else {
    // Services of the machine itself know its name; one that is there would be taken for the application.
    if (settings.transport != Settings::kLocal) before_event_ += host_name() + ' ';
    before_event_ += application_of(settings) + '[' + process + "]:";
  }
  element_.append("[").append(kSyslogElement).append("@").append(std::to_string(settings.enterprise_number));
}

std::string_view SyslogMessage::make(const SyslogParts& parts, std::string_view line_head, const std::timespec& now) {
  if (text_.capacity() > kMostKept) std::string().swap(text_);
  text_.resize(kSyslogRoomBefore);
  head_.clear();
  if (has_entry_) append_syslog_line(line_head, head_);
  append_header(parts, now);
  append_body(parts);
  return framed();
}

void SyslogMessage::append_header(const SyslogParts& parts, const std::timespec& now) {
  text_ += '<';
  append_number(facility_ * 8 + syslog_severity(parts.level), text_);
  text_ += '>';
  append_moment(now);
  text_ += before_event_;
  if (is_rfc5424_) text_ += parts.event;
}

/// "1 2026-11-21T08:15:30.123456Z", or "Nov 21 08:15:30" on the local clock.
void SyslogMessage::append_moment(const std::timespec& now) {
  if (now.tv_sec != moment_second_) {
    char text[64];
    if (is_rfc5424_) {
      moment_.assign("1 ").append(text, write_moment(text, now.tv_sec));
    } else {
      constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
      std::tm local = {};
      localtime_r(&now.tv_sec, &local);
      moment_ = kMonths[local.tm_mon];
      moment_.append(text, std::strftime(text, sizeof text, " %e %H:%M:%S", &local));
    }
    moment_second_ = now.tv_sec;
  }
  text_ += moment_;
  if (!is_rfc5424_) return;
  char fraction[] = ".000000Z";
  write_digit_pair(fraction + 1, static_cast<unsigned>(now.tv_nsec / 10'000'000 % 100));
  write_digit_pair(fraction + 3, static_cast<unsigned>(now.tv_nsec / 100'000 % 100));
  write_digit_pair(fraction + 5, static_cast<unsigned>(now.tv_nsec / 1'000 % 100));
  text_ += fraction;
}

void SyslogMessage::append_body(const SyslogParts& parts) {
  const SyslogContent content = {.is_rfc5424 = is_rfc5424_,
                                 .element = has_entry_ ? std::string_view(element_) : std::string_view(),
                                 .entry_head = head_,
                                 .entry = parts.entry,
                                 .parameters = parts.parameters,
                                 .parameter_ends = parts.parameter_ends,
                                 .text = parts.text};
  const SyslogContentFit result = append_syslog_content(content, text_.size() - kSyslogRoomBefore, limit_, text_);
  fit_ = result.fit;
  is_shortened_ = result.is_shortened;
}

std::string_view SyslogMessage::framed() {
  const std::size_t begin = is_counted_ ? number_syslog_bytes(text_, 0) : kSyslogRoomBefore;
  return std::string_view(text_).substr(begin);
}

}  // namespace qzlog
