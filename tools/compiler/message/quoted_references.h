#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_QUOTED_REFERENCES_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_QUOTED_REFERENCES_H

#include <vector>

#include "tools/compiler/message/stored_template.h"

namespace qzlog_compiler {

/// The references of a template, cut for the ICU path, that ICU takes for quoted text since an apostrophe before them
/// begins a quotation: the reader sees a number in braces. References with an unknown format are not among them.
std::vector<TemplatePart> find_quoted_references(const StoredTemplate& stored);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_QUOTED_REFERENCES_H
