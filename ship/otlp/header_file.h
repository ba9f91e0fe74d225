#ifndef QZLOG_SHIP_OTLP_HEADER_FILE_H
#define QZLOG_SHIP_OTLP_HEADER_FILE_H

#include <string>
#include <vector>

namespace qzlog_ship {

/// Headers that stand in a file, one a line, as "Authorization: Bearer ..."; empty lines and those that begin with '#'
/// are passed over. Throws a failure for good, which shows nothing of the file's content.
std::vector<std::string> read_header_file(const std::string& path);

/// The text with every value of these headers, and every word of them that is long enough to be a secret, taken out: a
/// receiver may repeat them in what it says.
std::string without_secrets(std::string text, const std::vector<std::string>& headers);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_HEADER_FILE_H
