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

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_FILE_LDF_WRITER_H
