#ifndef QZLOG_SINKS_SYSLOG_TEXT_H
#define QZLOG_SINKS_SYSLOG_TEXT_H

#include <string>
#include <string_view>

namespace qzlog {

/// What stands between the quotes of a parameter of structured data (RFC 5424), where quotes, backslashes and closing
/// brackets have a backslash before them. All of these append to `out` and throw std::bad_alloc.

/// A line of JSON, or a part of one, which comes back as it is; but the character DEL, which receivers replace, becomes
/// an escape of JSON.
void append_syslog_line(std::string_view line, std::string& out);

/// A text of UTF-8. Control characters become escapes: "\n", "\r", "\0", "\x1B".
void append_syslog_value(std::string_view text, std::string& out);

/// A text outside of structured data, with the same escapes for control characters.
void append_syslog_message(std::string_view text, std::string& out);

/// As much of a text of UTF-8 as has `room` bytes, in whole characters, with "..." for what is missing where there is
/// room for that.
void append_cut_text(std::string_view text, std::size_t room, std::string& out);

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_TEXT_H
