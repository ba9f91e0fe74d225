#ifndef QZLOG_COUNTER_RECORD_STORE_H
#define QZLOG_COUNTER_RECORD_STORE_H

#include <memory>

#include "counter/logentrycounter_index.h"
#include "counter/record_scanner.h"

namespace qzlog {

/// An index of a counter's file; null until searches were long.
using CounterIndexPointer = std::unique_ptr<_qz_LOG_EntryCounterIndex>;

// Operations on an open counter file by position; the stream that the descriptor belongs to stays where it is. None
// throws: without memory there is no index.

/// Where the record with the date and key of `wanted` stands, else where a new one goes.
RecordPlace find_record(int descriptor, CounterIndexPointer& index, const CounterRecord& wanted);
/// The same, read from the file whatever the index says.
RecordPlace scan_for_record(int descriptor, CounterIndexPointer& index, const CounterRecord& wanted);
/// The first free record, else the end.
RecordPlace find_free(int descriptor, CounterIndexPointer& index);
/// Writes a record with one write. False, with errno, when it cannot be; the file is then as it was.
bool write_record(int descriptor, CounterIndexPointer& index, const RecordPlace& place, const CounterRecord& record);

/// A count modulo 2^32.
int count_more(int count, unsigned times);

}  // namespace qzlog

#endif  // QZLOG_COUNTER_RECORD_STORE_H
