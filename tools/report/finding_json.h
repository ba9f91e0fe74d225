#ifndef QZLOG_TOOLS_REPORT_FINDING_JSON_H
#define QZLOG_TOOLS_REPORT_FINDING_JSON_H

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

#include "tools/report/finding.h"
#include "tools/report/json_stream.h"

namespace qzlog_tool {

/// Of the form that all results in JSON have in common; raised when a program that reads them has to change.
inline constexpr int kJsonResultVersion = 1;

nlohmann::ordered_json to_json(const qzlog_compiler::Finding& finding);

/// What every result of a command begins with: `qzlog`, the version of the form, and `findings`. The command's own
/// members follow.
nlohmann::ordered_json json_result(std::span<const qzlog_compiler::Finding> findings);

/// Indented, with a line feed at its end; what is not UTF-8 becomes replacement characters.
std::string json_result_text(const nlohmann::ordered_json& result);

/// The same for a result that is written member by member, in lines (`kResultLayout`).
void add_json_beginning(std::span<const qzlog_compiler::Finding> findings, qzlog_compiler::JsonObjectStream& json);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_FINDING_JSON_H
