#ifndef QZLOG_TOOLS_INSPECT_LDF_ANNOTATION_H
#define QZLOG_TOOLS_INSPECT_LDF_ANNOTATION_H

#include <cstddef>
#include <iosfwd>

#include "tools/inspect/ldf_survey.h"

namespace qzlog_compiler {

/// Writes every byte of the file once, in the order of the file: offset, bytes, field and value. A byte that several
/// regions claim belongs to the header, else to the one that begins last; what is left of the others is marked as such,
/// and so are bytes that no region claims. Lines are cut to `columns` characters, 0 for not at all.
void write_annotation(const LdfSurvey& survey, std::size_t columns, std::ostream& out);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_LDF_ANNOTATION_H
