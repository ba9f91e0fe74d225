#ifndef QZLOG_DEFINITIONS_RECORD_BYTES_H
#define QZLOG_DEFINITIONS_RECORD_BYTES_H

#include <cstddef>

namespace qzlog {

/// The bytes of records, one after the other, wherever they come from.
class RecordBytes {
 public:
  /// Copies the next `size` bytes and goes on behind them. False when they cannot be read, or not so many are left;
  /// what follows is then unspecified. Never throws.
  virtual bool read(void* target, std::size_t size) noexcept = 0;
  /// Whether so many bytes are left.
  virtual bool has_left(std::size_t size) noexcept = 0;

 protected:
  ~RecordBytes() = default;
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_RECORD_BYTES_H
