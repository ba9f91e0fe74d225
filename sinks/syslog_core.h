#ifndef QZLOG_SINKS_SYSLOG_CORE_H
#define QZLOG_SINKS_SYSLOG_CORE_H

#include <atomic>
#include <memory>
#include <string_view>
#include <vector>

#include "lines/line_envelope.h"
#include "qzlog/syslog_sink.h"
#include "sinks/fork_registry.h"
#include "sinks/loss_table.h"
#include "sinks/stream_lock.h"
#include "sinks/syslog_connection.h"
#include "sinks/syslog_message.h"
#include "sinks/syslog_parts.h"

namespace qzlog {

/// What of a syslog sink is one writer: its number of lines, its connection, and what it lost. A process that fork made
/// has another one. Any thread.
class SyslogCore final : public ForkRegistry::Member, private LostMessages {
 public:
  /// `failures` is told of entries that were taken and are lost; both have to outlive this object. QZX_memory_alloc,
  /// std::bad_alloc.
  static std::shared_ptr<SyslogCore> open(const qz_LOG_SyslogSinkSettings& settings, LostMessages& failures);
  SyslogCore(const qz_LOG_SyslogSinkSettings& settings, LostMessages& failures);
  ~SyslogCore();

  /// The bytes that were sent, 0 when the message was not taken.
  std::size_t write(const SyslogParts& parts);
  /// A message for each row. False unless all were taken.
  bool tell_held(const std::vector<LossTable::Row>& rows);
  bool flush(unsigned milliseconds);
  /// How many entries are left.
  unsigned long long close(unsigned milliseconds);
  qz_LOG_SyslogSinkStatus status() const;
  void note_loss(unsigned id, unsigned level) noexcept;

 private:
  void abandon() noexcept override { connection_.abandon(); }
  void end() noexcept override {}
  void message_lost(const SentMessage& message) noexcept override;

  std::size_t write_locked(const SyslogParts& parts, long long deadline);
  std::size_t send(const SyslogParts& parts, unsigned told, long long deadline);
  bool tell(ToldOf kind, const LossTable::Row& row, long long deadline);
  void tell_losses(long long deadline) noexcept;
  void count_shortened();

  const qz_LOG_SyslogSinkSettings& settings_;
  LostMessages& failures_;
  LossTable losses_;
  std::atomic<bool> is_closed_{false};

  mutable StreamLock lock_;  // guards what follows
  LineEnvelope envelope_;
  SyslogMessage message_;
  SyslogConnection connection_;
  SyslogParts told_parts_;
  unsigned long long seq_ = 0;
  unsigned long long shortened_ = 0;
  unsigned long long without_entry_ = 0;
  unsigned long long refused_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_CORE_H
