#ifndef QZLOG_TOOLS_TRANSPORT_RECEIVED_LOG_H
#define QZLOG_TOOLS_TRANSPORT_RECEIVED_LOG_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "tools/choice/reader_moment.h"
#include "tools/logs/log_reading.h"
#include "tools/transport/origin_options.h"
#include "tools/transport/reader_host.h"
#include "tools/transport/received_feed.h"
#include "tools/transport/received_source.h"
#include "tools/transport/transport_plugin.h"
#include "tools/transport/transport_reader.h"
#include "tools/transport/transport_settings.h"

namespace qzlog_tool {

/// The entries that a receiver has, read as those of a file. With a group, records are settled once what was made of
/// them is out: a reader that is killed before leaves them to others. So does one whose definitions do not have what an
/// entry names: those stay for readers that have the right ones, as is told at the end.
class ReceivedLog {
 public:
  /// When it is asked whether all is out.
  enum class Pause {
    kMore,     ///< a batch was read
    kNothing,  ///< there is nothing to read for now
    kEnd       ///< nothing more is read
  };
  struct Reading {
    const LogReading& logs;
    /// Brings what was made of the lines out, and says whether it is: the records are settled then.
    std::function<bool(Pause pause)> let_out;
    std::size_t most_held = SIZE_MAX;  ///< ends when so many records are not settled
  };
  /// Why it ended.
  struct End {
    int signal = 0;            ///< that asked for the end
    bool output_gone = false;  ///< nobody reads standard output any more
  };

  /// Throws CommandError (cannot run), as for a plug-in that is not there or cannot read. Nothing is opened yet. `url`
  /// has to outlive this object.
  ReceivedLog(const OriginOptions& options, const TransportUrl& url, const ReaderClock& clock, bool follow);
  ReceivedLog(const ReceivedLog&) = delete;
  ReceivedLog& operator=(const ReceivedLog&) = delete;

  /// Leaves out records that came before, of those that no writer and number tells apart.
  void drop_doubles() { source_.drop_doubles(); }
  /// To the end that the receiver has, or until a signal or what is wanted is complete. Throws CommandError.
  End read(const Reading& reading);
  /// The record of the line that is at hand.
  const qzlog_received& current() const { return source_.current(); }
  /// Leaves that record to others of the group: nothing could be made of it here.
  void leave_current();
  /// Settles what was read and is not settled; for what is out when reading has ended.
  void settle();

 private:
  using Clock = std::chrono::steady_clock;

  /// Notes which records the definitions do not know, on the way to who reads.
  class UnknownEntries : public qz_LOG_LineErrorHandler {
   public:
    UnknownEntries(qz_LOG_LineErrorHandler& reader, ReceivedLog& log) : reader_(reader), log_(log) {}
    void TakeLineError(const qz_LOG_LineError& error) override;

   private:
    qz_LOG_LineErrorHandler& reader_;
    ReceivedLog& log_;
  };

  bool read_next(qz_LOG_EntryReader& reader, const Reading& reading);
  bool read_records(qz_LOG_EntryReader& reader, const Reading& reading);
  bool wait_on(const Reading& reading);
  void hold_read();
  void let_out(const Reading& reading, Pause pause);
  void tell_of_unknown() const;

  const TransportUrl& url_;
  TransportPlugin plugin_;
  TransportOptions options_;
  TransportSettings settings_;
  ReaderHost host_;
  std::string group_;
  qzlog_start start_;
  TransportReader reader_;
  ReceivedFeed feed_;
  ReceivedSource source_;
  std::vector<std::uint64_t> held_;     // tokens of what was read and is not settled
  std::vector<std::uint64_t> unknown_;  // of the records at hand, in their order: tokens of what stays for others
  std::uint64_t unknown_count_ = 0;
  Clock::time_point latest_ = Clock::now();
  End end_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_RECEIVED_LOG_H
