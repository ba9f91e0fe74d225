#ifndef QZLOG_SHIP_FILE_FILE_READER_H
#define QZLOG_SHIP_FILE_FILE_READER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "ship/file/group_reader.h"
#include "ship/file/record_file.h"
#include "ship/transport.h"

/// Reads what senders appended to a file, alone or as one of a group. The number of a record is that of its line.
struct qzlog_reader {
 public:
  qzlog_reader(const qzlog_settings& settings, const qzlog_start& start);
  ~qzlog_reader();
  qzlog_reader(const qzlog_reader&) = delete;
  qzlog_reader& operator=(const qzlog_reader&) = delete;

  /// False at the end.
  bool read(qzlog_received* records, std::size_t most, std::uint32_t timeout_ms, std::size_t& count);

  void settle(std::span<const std::uint64_t> tokens);

 private:
  void open(const qzlog_start& start);
  void skip_to(const qzlog_start& start);
  void join(const qzlog_start& start);
  bool read_more();
  std::size_t give_out(qzlog_received* records, std::size_t most);

  qzlog_ship::RecordFileName file_;
  int descriptor_ = -1;
  std::uint64_t end_ = UINT64_MAX;  // where it was at opening, where it is not followed
  std::uint64_t position_ = 0;      // behind the held bytes
  std::uint64_t sequence_ = 0;      // of the last record that was given out
  std::string held_;
  std::size_t given_ = 0;  // of them
  std::unique_ptr<qzlog_ship::GroupReader> group_;
};

#endif  // QZLOG_SHIP_FILE_FILE_READER_H
