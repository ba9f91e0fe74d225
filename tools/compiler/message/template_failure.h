#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_TEMPLATE_FAILURE_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_TEMPLATE_FAILURE_H

#include <string>
#include <string_view>

#include "tools/compiler/message/reference_formats.h"
#include "tools/compiler/message/stored_template.h"

namespace qzlog_compiler {

/// Why the ICU path refuses a pattern that nests deeper than kMostPatternNesting (message/pattern_nesting.h).
std::string nesting_failure();

/// Why no entry can be rendered with a stored template on a path, empty when that need not be so. For the ICU form
/// `stored` is UTF-8. References to attributes of `TypeUnknown` are not judged.
std::string find_template_failure(std::string_view stored, TemplateForm form, const AttributeLookup& lookup);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_TEMPLATE_FAILURE_H
