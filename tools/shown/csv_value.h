#ifndef QZLOG_TOOLS_SHOWN_CSV_VALUE_H
#define QZLOG_TOOLS_SHOWN_CSV_VALUE_H

#include <string>
#include <string_view>

namespace qzlog_tool {

/// What stands at the end of each record of CSV.
inline constexpr std::string_view kCsvEnd = "\r\n";

/// Appends a value as a field of CSV (RFC 4180): in quotes where it needs them.
void append_csv(std::string_view value, std::string& out);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_CSV_VALUE_H
