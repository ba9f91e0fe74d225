#ifndef QZLOG_TOOLS_TRANSPORT_RECORD_READER_H
#define QZLOG_TOOLS_TRANSPORT_RECORD_READER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "ship/transport.h"

namespace qzlog_tool {

/// What one attempt to read gave.
struct ReadRecords {
  std::span<const qzlog_received> records;  ///< valid until the next call
  bool at_end = false;                      ///< there are no more
};

/// Reads records from a receiver. The outcomes are those of qzlog_transport; a `reason` is set for what is not done.
class RecordReader {
 public:
  virtual ~RecordReader() = default;

  virtual qzlog_outcome read(std::chrono::milliseconds timeout, ReadRecords& read, std::string& reason) = 0;
  virtual qzlog_outcome settle(std::span<const std::uint64_t> tokens, std::chrono::milliseconds timeout,
                               std::string& reason) = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_RECORD_READER_H
