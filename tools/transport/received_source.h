#ifndef QZLOG_TOOLS_TRANSPORT_RECEIVED_SOURCE_H
#define QZLOG_TOOLS_TRANSPORT_RECEIVED_SOURCE_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "qzlog/entry_lines.h"
#include "ship/transport.h"
#include "tools/transport/seen_identities.h"

namespace qzlog_tool {

/// Records as the lines of a file: each is a line, so that the number of a line is that of its record among those that
/// were read. Lines are given out one by one: a reader of entries that asks for the next one is done with those before
/// it.
class ReceivedSource : public qz_LOG_ByteSource {
 public:
  /// Thrown to the reader, and by it, when all that there is was given out. Reading goes on with the next records.
  struct NoMore {};

  /// The records have to stay until NoMore is thrown, or nothing more is read.
  void give(std::span<const qzlog_received> records);
  /// From now on a record that came before is an empty line (SeenIdentities).
  void drop_doubles() { seen_.emplace(); }
  std::size_t Read(char* buffer, std::size_t size) override;

  /// How many of them were given out.
  std::size_t given() const noexcept { return given_; }
  /// The last one of these.
  const qzlog_received& current() const { return records_[given_ - 1]; }

 private:
  void make_line(const qzlog_received& record);

  std::span<const qzlog_received> records_;
  std::size_t given_ = 0;
  std::string line_;  // of the last one
  std::size_t taken_ = 0;
  std::optional<SeenIdentities> seen_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_RECEIVED_SOURCE_H
