#ifndef QZLOG_LINES_JSON_TEXT_H
#define QZLOG_LINES_JSON_TEXT_H

#include <string>
#include <string_view>

namespace qzlog {

/// Appends a text of any bytes as a JSON string; what is not UTF-8 becomes replacement characters, one for each
/// sequence that begins like a character and does not become one, and for each byte that begins none.
void append_json_text(std::string_view text, std::string& out);

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_TEXT_H
