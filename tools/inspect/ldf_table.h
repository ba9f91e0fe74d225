#ifndef QZLOG_TOOLS_INSPECT_LDF_TABLE_H
#define QZLOG_TOOLS_INSPECT_LDF_TABLE_H

#include <cstddef>
#include <iosfwd>

#include "tools/inspect/ldf_survey.h"

namespace qzlog_compiler {

/// Writes a compiled file as tables: the header, the global attributes, the entry map, and one block for each record,
/// all with their offsets. Lines are cut to `columns` characters, 0 for not at all.
void write_table(const LdfSurvey& survey, std::size_t columns, std::ostream& out);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_LDF_TABLE_H
