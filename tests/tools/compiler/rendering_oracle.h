#ifndef QZLOG_TESTS_TOOLS_COMPILER_RENDERING_ORACLE_H
#define QZLOG_TESTS_TOOLS_COMPILER_RENDERING_ORACLE_H

#include <map>
#include <optional>
#include <string>

/// A plain retelling of how the library renders a stored template, kept apart from it on purpose: the compiler's
/// templates are judged by this.
namespace rendering_oracle {

/// What an attribute shows in each format: the format characters it accepts, with the text.
using Values = std::map<std::string, std::map<char, std::string>>;

/// The message of the ICU path; none when rendering fails or the template is broken.
std::optional<std::string> render_icu(const std::string& stored, const Values& values);

/// The message of the narrow path; none when rendering fails or the template is broken.
std::optional<std::string> render_narrow(const std::string& stored, const Values& values);

}  // namespace rendering_oracle

#endif  // QZLOG_TESTS_TOOLS_COMPILER_RENDERING_ORACLE_H
