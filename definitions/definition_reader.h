#ifndef QZLOG_DEFINITIONS_DEFINITION_READER_H
#define QZLOG_DEFINITIONS_DEFINITION_READER_H

#include <cstdio>

#include "definitions/def_read.h"
#include "definitions/definition_stream.h"
#include "definitions/ldf_def.h"

namespace qzlog {

/// Reads a definition file into definitions, record by record (def_read knows the records). What cannot be opened,
/// found or read throws QZX_logging_invalid_definition; QZX_memory_alloc is thrown without memory.

/// What is recorded about reading definition files has this source name.
inline constexpr const char* kDefinitionFileSource = "ldf_load";

/// The file, open for reading; no other process that this one starts gets it.
DefinitionStream open_definition_file(const char* path);

/// Records the failure and throws what every part that cannot be read throws.
[[noreturn]] void throw_unreadable_definition_file();
void seek_in_definition_file(std::FILE* file, long long offset);

_qz_LOG_ldf_header_struct read_definition_header(std::FILE* file);

/// Adds the global attributes of the file to those of the process.
void read_global_attributes(const DefinitionStream& stream, const _qz_LOG_ldf_header_struct& header);

/// Adds to a definition what the record at an offset says, which has to be that of `entry_id`. The record of an
/// auxiliary file must not contradict what the definition has, and leaves it its property mask and, unless it has both
/// texts of one, its default message. When it throws, the definition has what was read before.
void read_definition(const DefinitionStream& stream, unsigned offset, unsigned entry_id, bool is_aux,
                     _qz_LOG_log_definition& def);

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_DEFINITION_READER_H
