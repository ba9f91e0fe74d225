#ifndef QZLOG_LINES_BASE64_DECODE_H
#define QZLOG_LINES_BASE64_DECODE_H

#include <string>
#include <string_view>

namespace qzlog {

/// The bytes that `text` stands for in base64 (RFC 4648: the letters with + and /, padded), in place of what `bytes`
/// holds. False when it is none; bits that stand for nothing have to be zero.
bool decode_base64(std::string_view text, std::string& bytes);

}  // namespace qzlog

#endif  // QZLOG_LINES_BASE64_DECODE_H
