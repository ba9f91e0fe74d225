#ifndef QZLOG_TOOLS_COMPILER_FILE_LDF_WRITER_H
#define QZLOG_TOOLS_COMPILER_FILE_LDF_WRITER_H

#include <string>

#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

/// The bytes of the compiled definition file: header, global attributes, entry map, entry records, without gaps.
/// Entries stand in the order of their IDs, so that moving one in a source changes nothing; everything else keeps its
/// order. Throws `std::length_error` for what the format cannot hold: more than 255 attributes, global attributes or
/// selector messages, a version over 8 bytes, a file over 4 GiB.
std::string write_ldf(const DefinitionModel& model);

/// Appends the names section and its trailer to the records of a model: the names and summaries of its entries and the
/// marks of its attributes. Nothing where it has neither. Throws `std::length_error` for more than the format holds.
void append_names(const DefinitionModel& model, std::string& file);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_FILE_LDF_WRITER_H
