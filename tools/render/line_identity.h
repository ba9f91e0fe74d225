#ifndef QZLOG_TOOLS_RENDER_LINE_IDENTITY_H
#define QZLOG_TOOLS_RENDER_LINE_IDENTITY_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// Who wrote a line, and as which of his.
struct LineIdentity {
  std::string writer;
  std::uint64_t seq = 0;
};

/// Of a line that the reader refuses, such as one of an entry that no definition knows. Nothing where it is no whole
/// JSON object or does not say both. Takes memory for the longest text in the line alone.
std::optional<LineIdentity> line_identity(std::string_view line);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LINE_IDENTITY_H
