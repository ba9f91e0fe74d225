#ifndef QZLOG_TOOLS_TEMPLATES_READABLE_TEMPLATE_H
#define QZLOG_TOOLS_TEMPLATES_READABLE_TEMPLATE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/reference_formats.h"
#include "tools/compiler/message/stored_template.h"

namespace qzlog_tool {

/// What a reader sees of a stored template on that path, quoting for ICU undone: texts and references. Texts may come
/// in any number of pieces. None where no message comes out.
std::optional<std::vector<qzlog_compiler::TemplatePart>> shown_parts(std::string_view stored,
                                                                     qzlog_compiler::TemplateForm form);

/// A stored template as a reader sees its message on that path, with `{Name}` where a value comes, or `{Name:F}` where
/// the format does not follow from the type. What the path does not show is left out, quoting for ICU is undone, and
/// literal braces stand as they are. None where no message comes out.
std::optional<std::string> readable_template(std::string_view stored, qzlog_compiler::TemplateForm form,
                                             const qzlog_compiler::AttributeLookup& lookup);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPLATES_READABLE_TEMPLATE_H
