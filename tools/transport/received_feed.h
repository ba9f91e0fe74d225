#ifndef QZLOG_TOOLS_TRANSPORT_RECEIVED_FEED_H
#define QZLOG_TOOLS_TRANSPORT_RECEIVED_FEED_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "tools/transport/back_off.h"
#include "tools/transport/record_reader.h"

namespace qzlog_tool {

/// The records of a receiver, which may be away for a while: it is tried again then, later each time, and said once.
class ReceivedFeed {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Settings {
    std::string from;                ///< what texts call the receiver
    Milliseconds read_timeout{500};  ///< a signal is heard at the latest then
    Milliseconds settle_timeout{10000};
    BackOff::Limits back_off;
    int settle_attempts = 5;
  };
  struct Parts {
    RecordReader& reader;
    std::function<void(const std::string&)> warn;
    std::function<bool()> is_ending;
  };
  enum class State {
    kRecords,  ///< some came
    kNothing,  ///< none for now
    kEnd       ///< there are no more
  };

  ReceivedFeed(Settings settings, Parts parts);

  /// Takes up to about the timeout of reading. Throws CommandError (cannot run) for what will not work.
  State next();
  /// What the last call of next gave.
  std::span<const qzlog_received> records() const { return read_.records; }
  /// Says that records are done with. Where the receiver may not know, they come again, to this reader or another one,
  /// which is told. Throws as above.
  void settle(std::span<const std::uint64_t> tokens);

 private:
  State fail(const std::string& reason);
  void warn_once(const std::string& text);
  void rest(Milliseconds time) const;

  Settings settings_;
  Parts parts_;
  BackOff back_off_;
  ReadRecords read_;
  std::string told_;  // the failure that was told last
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_RECEIVED_FEED_H
