#ifndef QZLOG_TOOLS_TEMPLATES_READABLE_TEMPLATE_H
#define QZLOG_TOOLS_TEMPLATES_READABLE_TEMPLATE_H

#include <optional>
#include <string>

#include "tools/compiler/message/reference_formats.h"
#include "tools/compiler/message/template_judge.h"

namespace qzlog_tool {

/// What was judged as a reader sees its message, with `{Name}` where a value comes, or `{Name:F}` where the format does
/// not follow from the type. What the path does not show is left out, quoting for ICU is undone, and literal braces
/// stand as they are. None where the text itself keeps a message from coming out.
std::optional<std::string> readable_template(const qzlog_compiler::TemplateJudgement& judged,
                                             const qzlog_compiler::AttributeLookup& lookup);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPLATES_READABLE_TEMPLATE_H
