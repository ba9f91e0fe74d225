#ifndef QZLOG_SHIP_FILE_FILE_SENDER_H
#define QZLOG_SHIP_FILE_FILE_SENDER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "ship/file/fault_plan.h"
#include "ship/file/record_file.h"
#include "ship/plugin/descriptor.h"
#include "ship/transport.h"

/// Appends records to a file, which other senders may do too. A record is acknowledged when it is on the disk.
struct qzlog_sender {
 public:
  qzlog_sender(const qzlog_settings& settings, qzlog_ship::PluginOptions options);

  void send(const qzlog_record* records, std::size_t count, std::uint32_t timeout_ms, qzlog_result* results);

 private:
  class Lock;

  void open();
  void cut_off_torn_line();
  void learn_identities();
  bool takes(const qzlog_record& record, qzlog_result& result);
  void write(const std::string& text);

  qzlog_ship::FaultPlan faults_;
  qzlog_ship::RecordFileName file_;
  bool drops_doubles_;
  bool syncs_;
  qzlog_ship::Descriptor descriptor_;
  std::unordered_set<std::string> known_;  // identities that are there, where doubles are dropped
  std::string text_;
};

#endif  // QZLOG_SHIP_FILE_FILE_SENDER_H
