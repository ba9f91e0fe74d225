#ifndef QZLOG_FILE_IO_H
#define QZLOG_FILE_IO_H

#include <cstdio>

#include "qzlog/export.h"

/// Big-endian integers and byte runs on stdio streams, the primitives of log definition files.
///
/// Each function transfers one item at the stream's position and returns true when the whole item was transferred.
/// After a false result the position is wherever the transfer stopped; an integer that could not be read is left as it
/// was, while a byte run may hold a prefix. Nothing is thrown. The result does not depend on the host's byte order.

QZLOG_EXPORT bool qz_be_read_int1(std::FILE* file, unsigned char* out);
QZLOG_EXPORT bool qz_be_read_int2(std::FILE* file, unsigned short* out);
QZLOG_EXPORT bool qz_be_read_int4(std::FILE* file, unsigned* out);
/// A run of 0 bytes always succeeds.
QZLOG_EXPORT bool qz_read_data_chunk(std::FILE* file, void* buffer, unsigned size_bytes);

/// The writers take the value by pointer, like the readers, and do not change it.
QZLOG_EXPORT bool qz_be_write_int1(std::FILE* file, unsigned char* in);
QZLOG_EXPORT bool qz_be_write_int2(std::FILE* file, unsigned short* in);
QZLOG_EXPORT bool qz_be_write_int4(std::FILE* file, unsigned* in);
/// A run of 0 bytes always succeeds.
QZLOG_EXPORT bool qz_write_data_chunk(std::FILE* file, void* buffer, unsigned size_bytes);

#endif  // QZLOG_FILE_IO_H
