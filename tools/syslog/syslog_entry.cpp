#include "tools/syslog/syslog_entry.h"

#include <algorithm>
#include <cstddef>

#include "sinks/syslog_name.h"

namespace qzlog_tool {

namespace {

constexpr bool is_digit(char character) { return character >= '0' && character <= '9'; }

/// What an element of structured data is, as far as it was read.
struct Element {
  bool is_ours = false;  ///< by its name
  bool is_whole = false;
  bool has_line = false;
  bool has_omitted = false;
  std::string_view rest;  ///< behind it
};

/// Reads one element that begins with "[". The value of our `entry` goes to `line`.
class ElementReader {
 public:
  ElementReader(std::string_view text, std::string& line) : rest_(text), line_(line) {}

  Element read() {
    rest_.remove_prefix(1);
    element_.is_ours = is_our_name(take_until(" ]"));
    while (take(' ')) {
      if (!read_parameter()) return end(false);
    }
    return end(take(']'));
  }

 private:
  Element end(bool is_whole) {
    element_.is_whole = is_whole;
    element_.rest = rest_;
    return element_;
  }

  static bool is_our_name(std::string_view name) {
    if (!name.starts_with(qzlog::kSyslogElement)) return false;
    name.remove_prefix(qzlog::kSyslogElement.size());
    return name.size() > 1 && name.front() == '@' && std::all_of(name.begin() + 1, name.end(), is_digit);
  }

  bool take(char wanted) {
    if (rest_.empty() || rest_.front() != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view take_until(std::string_view ends) {
    const std::string_view taken = rest_.substr(0, rest_.find_first_of(ends));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  bool read_parameter() {
    const std::string_view name = take_until("= ]\"");
    if (name.empty() || !take('=') || !take('"')) return false;
    const std::string lowered = name.size() <= qzlog::kMostSyslogName ? qzlog::lowered_syslog_name(name) : "";
    const bool is_line = element_.is_ours && !element_.has_line && lowered == qzlog::kSyslogEntry;
    if (is_line) line_.clear();
    if (!read_value(is_line)) return false;
    element_.has_line = element_.has_line || is_line;
    element_.has_omitted = element_.has_omitted || lowered == qzlog::kSyslogOmitted;
    return true;
  }

  bool read_value(bool is_line) {
    for (;;) {
      const std::string_view plain = take_until("\"\\]");
      if (is_line) line_ += plain;
      if (take('"')) return true;
      if (rest_.size() < 2 || rest_.front() == ']') return false;
      const bool is_escape = std::string_view("\"\\]").find(rest_[1]) != std::string_view::npos;
      if (is_line) line_ += is_escape ? rest_.substr(1, 1) : rest_.substr(0, 2);
      rest_.remove_prefix(2);
    }
  }

  std::string_view rest_;
  std::string& line_;
  Element element_;
};

SyslogFound found_in(const Element& element, std::string_view line) {
  if (!element.is_whole) return SyslogFound::kBroken;
  // A line in a line would be taken for two.
  if (element.has_line) return line.find('\n') == std::string_view::npos ? SyslogFound::kLine : SyslogFound::kBroken;
  return element.has_omitted ? SyslogFound::kOmitted : SyslogFound::kBroken;
}

/// Behind "<14>1 TIME HOST APPLICATION PID EVENT ", where the structured data of RFC 5424 begin; empty when the message
/// is no such one.
std::string_view structured_data_of(std::string_view message) {
  if (message.starts_with('<')) {
    message.remove_prefix(1);
    const auto* const end = std::find_if_not(message.begin(), message.end(), is_digit);
    if (end == message.begin() || end == message.end() || *end != '>') return {};
    message.remove_prefix(static_cast<std::size_t>(end - message.begin()) + 1);
  }
  if (!message.starts_with("1 ")) return {};
  constexpr unsigned kFields = 6;
  for (unsigned field = 0; field < kFields; ++field) {
    const std::size_t blank = message.find(' ');
    if (blank == 0 || blank == std::string_view::npos) return {};
    message.remove_prefix(blank + 1);
  }
  return message;
}

SyslogFound find_in_structured_data(std::string_view data, std::string& line) {
  while (data.starts_with('[')) {
    const Element element = ElementReader(data, line).read();
    if (element.is_ours) return found_in(element, line);
    if (!element.is_whole) break;
    data = element.rest;
  }
  return SyslogFound::kNothing;
}

/// The texts of messages may look like structured data, but those at the end are the only ones that end there: quotes
/// within them have backslashes, and what begins before them ends at one of their quotes.
SyslogFound find_at_end(std::string_view message, std::string& line) {
  const std::string beginning = '[' + std::string(qzlog::kSyslogElement) + '@';
  SyslogFound found = SyslogFound::kNothing;
  for (std::size_t at = message.find(beginning); at != std::string_view::npos; at = message.find(beginning, at + 1)) {
    const Element element = ElementReader(message.substr(at), line).read();
    if (!element.is_ours) continue;
    if (element.is_whole && element.rest.empty()) return found_in(element, line);
    const bool breaks_off = !element.is_whole && at != 0 && message[at - 1] == ' ';
    if (breaks_off) found = SyslogFound::kBroken;
  }
  return found;
}

}  // namespace

SyslogFound find_syslog_entry(std::string_view message, std::string& line) {
  constexpr std::string_view kEnds("\r\0 ", 3);
  const std::size_t last = message.find_last_not_of(kEnds);
  message = message.substr(0, last == std::string_view::npos ? 0 : last + 1);
  const std::string_view data = structured_data_of(message);
  if (data.starts_with('[')) {
    const SyslogFound found = find_in_structured_data(data, line);
    if (found != SyslogFound::kNothing) return found;
  }
  return find_at_end(message, line);
}

}  // namespace qzlog_tool
