#include "sinks/syslog_content.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "sinks/syslog_name.h"
#include "sinks/syslog_text.h"

namespace qzlog {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kEntryBegin = " entry=\"";
constexpr std::string_view kParameterEnd = "\"";

bool is_ascii(std::string_view text) {
  return std::none_of(text.begin(), text.end(),
                      [](char each) { return (static_cast<unsigned char>(each) & 0x80U) != 0; });
}

void append_number(std::size_t number, std::string& out) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

bool has_mark(const SyslogContent& content) { return content.is_rfc5424 && !is_ascii(content.text); }

SyslogFit fit_of(const SyslogContent& content, std::size_t before, std::size_t limit) {
  constexpr std::size_t kBlanks = 2;
  const bool has_entry = !content.element.empty();
  return fit_syslog(
      {.fixed = before + content.element.size() + 1 + kBlanks + (has_mark(content) ? kByteOrderMark.size() : 0),
       .entry =
           has_entry ? kEntryBegin.size() + kParameterEnd.size() + content.entry_head.size() + content.entry.size() : 0,
       .parameter_ends = content.parameter_ends,
       .text = content.text.size()},
      limit);
}

void append_data(const SyslogContent& content, const SyslogFit& fit, std::string& out) {
  if (content.element.empty()) {
    if (content.is_rfc5424) out += " -";
    return;
  }
  out += ' ';
  out += content.element;
  if (fit.has_entry) {
    out += kEntryBegin;
    out += content.entry_head;
    out += content.entry;
    out += kParameterEnd;
  }
  out += content.parameters.substr(0, fit.parameters);
  if (fit.omitted != 0) {
    out.append(" ").append(kSyslogOmitted).append("=\"");
    append_number(fit.omitted, out);
    out += kParameterEnd;
  }
  out += ']';
}

}  // namespace

SyslogContentFit append_syslog_content(const SyslogContent& content, std::size_t before, std::size_t limit,
                                       std::string& out) {
  const SyslogFit fit = fit_of(content, before, limit);
  if (content.is_rfc5424) append_data(content, fit, out);
  if (fit.text != 0) {
    out += ' ';
    if (has_mark(content)) out += kByteOrderMark;
    append_cut_text(content.text, fit.text, out);
  }
  if (!content.is_rfc5424) append_data(content, fit, out);
  return {fit, fit.omitted != 0 || fit.text != content.text.size()};
}

std::size_t number_syslog_bytes(std::string& out, std::size_t begin) noexcept {
  char count[kSyslogRoomBefore];
  char* const end = std::to_chars(count, count + sizeof count - 1, out.size() - begin - kSyslogRoomBefore).ptr;
  *end = ' ';
  const auto length = static_cast<std::size_t>(end + 1 - count);
  const std::size_t at = begin + kSyslogRoomBefore - length;
  std::memcpy(out.data() + at, count, length);
  return at;
}

}  // namespace qzlog
