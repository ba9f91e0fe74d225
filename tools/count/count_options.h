#ifndef QZLOG_TOOLS_COUNT_COUNT_OPTIONS_H
#define QZLOG_TOOLS_COUNT_COUNT_OPTIONS_H

#include <cstdint>
#include <string>

#include "tools/definitions/definitions.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qzlog_tool {

/// What the subcommands of `count` share.

/// Adds an option that takes a date, YYYY-MM-DD, which is checked.
CLI::Option* add_day_option(CLI::App& command, const std::string& name, std::string& day, const std::string& help);

/// Throws CommandError (cannot run) when both are given and `from` is the later one.
void refuse_reversed_days(const std::string& from, const std::string& to);

/// What definitions say, for the names of their entries. Throws CommandError: cannot run when they cannot be read or
/// are a compiled file without names, findings when they have errors, which are printed.
Definitions read_named_entries(const std::string& path);

/// The key that `text` gives: a number (entry IDs above 2147483647 become negative), or an entry's name in the
/// definitions, whose path may be empty. Throws CommandError (cannot run) when it is neither.
std::int32_t read_key(const std::string& text, const std::string& definitions);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNT_OPTIONS_H
