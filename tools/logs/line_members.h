#ifndef QZLOG_TOOLS_LOGS_LINE_MEMBERS_H
#define QZLOG_TOOLS_LOGS_LINE_MEMBERS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// What a line says of itself that is needed without its entry: before one is read, or where there is none. Texts are
/// empty where it does not say them.
struct LineMembers {
  std::optional<std::uint32_t> id;
  std::string symbolic_id;  ///< the event's name in the place of the ID
  std::string name;         ///< the event's, which its writer adds
  std::optional<unsigned> level;
  std::string writer;
  std::optional<std::uint64_t> seq;
  std::string time;
  std::string written;
  std::string definitions;
};

/// Of a line in whatever form. Nothing where it is no whole JSON object. Takes memory for the longest text in the line.
std::optional<LineMembers> read_line_members(std::string_view line);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_LINE_MEMBERS_H
