#ifndef QZLOG_TOOLS_INSPECT_LDF_JSON_H
#define QZLOG_TOOLS_INSPECT_LDF_JSON_H

#include <iosfwd>
#include <span>

#include "tools/inspect/ldf_survey.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// Writes a compiled file as one JSON object, each record once and in a line of its own. A text that the file stores in
/// another way than a writer would, or that is not UTF-8, is followed by its stored bytes under the same key with
/// `_hex`. `damages`: those of the survey, as findings.
void write_json(const LdfSurvey& survey, std::span<const Finding> damages, std::ostream& out);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_LDF_JSON_H
