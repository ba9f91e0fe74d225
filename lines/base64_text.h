#ifndef QZLOG_LINES_BASE64_TEXT_H
#define QZLOG_LINES_BASE64_TEXT_H

#include <cstddef>

#include "lines/line_output.h"

namespace qzlog {

/// Appends bytes in base64 (RFC 4648, with padding).
void append_base64(const char* bytes, std::size_t count, LineOutput& out);

}  // namespace qzlog

#endif  // QZLOG_LINES_BASE64_TEXT_H
