#ifndef QZLOG_TOOLS_TEMPLATES_SOURCE_DIGEST_H
#define QZLOG_TOOLS_TEMPLATES_SOURCE_DIGEST_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// The table of a catalog's bundle with the digest of the source text that each message was built from, under the keys
/// of the messages. The library does not look at it. What a digest is made of never changes under this name.
inline constexpr const char* kSourceTable = "SOURCE_TABLE";

/// Every message of every bundle has one, in characters of two bytes.
inline constexpr std::size_t kSourceDigestSize = 8;

/// The digest of a source text, in hexadecimal digits, by its stored template for the ICU path: of what readers see,
/// the format of every value included, and not of the way in which it is stored.
std::string source_digest(std::string_view stored);

/// Whether the digest is that of a stored template, for whichever path that was compiled.
bool is_source_digest_of(std::string_view digest, std::string_view stored);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPLATES_SOURCE_DIGEST_H
