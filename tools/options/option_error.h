#ifndef QZLOG_TOOLS_OPTIONS_OPTION_ERROR_H
#define QZLOG_TOOLS_OPTIONS_OPTION_ERROR_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// Throws CommandError (cannot run) about a place in an option's value, counted in bytes:
///
///     --format: unknown field 'mesage'
///       {time} {mesage}
///               ^
///       hint: did you mean 'message'?
///
/// `hint` may be empty.
[[noreturn]] void refuse_option(std::string_view option, std::string_view value, std::size_t place,
                                std::string_view reason, std::string_view hint = {});

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_OPTION_ERROR_H
