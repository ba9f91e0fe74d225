#ifndef QZLOG_TOOLS_SYSTEM_CONTENT_DIGEST_H
#define QZLOG_TOOLS_SYSTEM_CONTENT_DIGEST_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qzlog_tool {

inline constexpr std::size_t kContentDigestSize = 16;

/// FNV-1a of 64 bits as 16 hexadecimal digits in small letters: tells contents apart that differ by accident. It is no
/// protection from someone who wants two of them to look alike.
std::string content_digest(std::string_view content);

/// Whether a text can be one.
bool is_content_digest(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_CONTENT_DIGEST_H
