#ifndef QZLOG_TOOLS_SHIP_RECORD_IDENTITY_H
#define QZLOG_TOOLS_SHIP_RECORD_IDENTITY_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "tools/ship/line_parts.h"

namespace qzlog_tool {

/// Where a line stands.
struct LineStart {
  std::string_view file;     ///< the path from the root
  std::uint64_t offset = 0;  ///< of its first byte
};

/// What tells a line apart from every other one of every host: WRITER/SEQ; for a line without them
/// HOST/FILE@OFFSET#DIGEST, with the first 16 digits of the SHA-256 of its bytes. Blanks, control characters, percent
/// signs and what is not ASCII are written as %20 and so on.
class RecordIdentity {
 public:
  /// `host` is this host's name.
  explicit RecordIdentity(std::string host) : host_(std::move(host)) {}

  /// Replaces `identity`.
  void write(std::string_view line, const LineParts& parts, const LineStart& place, std::string& identity) const;

  const std::string& host() const noexcept { return host_; }

 private:
  std::string host_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_RECORD_IDENTITY_H
