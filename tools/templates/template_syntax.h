#ifndef QZLOG_TOOLS_TEMPLATES_TEMPLATE_SYNTAX_H
#define QZLOG_TOOLS_TEMPLATES_TEMPLATE_SYNTAX_H

#include <string>
#include <string_view>

namespace qzlog_catalog {

/// Why a stored template can never be shown on the ICU path; empty when it can. Says nothing about its attributes.
std::string template_syntax_failure(std::string_view stored);

/// Whether the ICU path drops the end of a template: it reads no further than to the last percent sign.
bool loses_its_end(std::string_view stored);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_TEMPLATES_TEMPLATE_SYNTAX_H
