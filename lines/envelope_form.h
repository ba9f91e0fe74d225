#ifndef QZLOG_LINES_ENVELOPE_FORM_H
#define QZLOG_LINES_ENVELOPE_FORM_H

#include <string_view>

namespace qzlog {

// The forms of what a writer adds to its lines.

/// HOST/PID/START: three parts, none of them empty, the second a number; no control characters.
bool is_writer_form(std::string_view text);

/// A date and a time with its zone, as RFC 3339 has them: YYYY-MM-DDTHH:MM:SS, a fraction or none, Z or +HH:MM. Which
/// days a month has is not asked.
bool is_moment_form(std::string_view text);

/// Sixteen hexadecimal digits in small letters; two of these joined by a plus sign where there are two files.
bool is_definitions_form(std::string_view text);

/// An event's name: not empty, no control characters.
bool is_event_name_form(std::string_view text);

}  // namespace qzlog

#endif  // QZLOG_LINES_ENVELOPE_FORM_H
