#ifndef QZLOG_TOOLS_TEMPLATES_TEMPLATE_CHECK_H
#define QZLOG_TOOLS_TEMPLATES_TEMPLATE_CHECK_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/reference_formats.h"
#include "tools/compiler/message/stored_template.h"
#include "tools/report/rule_table.h"

namespace qzlog_tool {

struct TemplateFinding {
  qzlog_compiler::AnyRule rule;
  std::string text;
  std::string hint;    ///< what to do about it; may be empty
  bool fails = false;  ///< no message comes out; false: it says something else than was meant

  friend bool operator==(const TemplateFinding&, const TemplateFinding&) = default;
};

/// Judges a stored template on one path. `lookup` gives the types of the attributes that the entry can have, `locale`
/// is ICU's name of the language that the ICU path renders in.
std::vector<TemplateFinding> check_template(std::string_view stored, qzlog_compiler::TemplateForm form,
                                            const qzlog_compiler::AttributeLookup& lookup,
                                            const std::string& locale = "root");

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPLATES_TEMPLATE_CHECK_H
