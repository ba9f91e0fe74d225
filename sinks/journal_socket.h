#ifndef QZLOG_SINKS_JOURNAL_SOCKET_H
#define QZLOG_SINKS_JOURNAL_SOCKET_H

#include <sys/socket.h>
#include <sys/uio.h>

#include <span>
#include <string>
#include <utility>

#include "foundation/descriptor.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// The way to journald: messages to its socket, which is looked for again when journald has been restarted. One thread
/// at a time; a process that fork makes may go on with it.
class JournalSocket : public qz_UTIL_no_inadvertant_copies {
 public:
  /// The most bytes of a message that is sent as it is. Longer ones go as a sealed file in memory, of which journald
  /// gets the descriptor.
  static constexpr std::size_t kLongestDatagram = 128U << 10;
  /// The most bytes of a socket's path.
  static constexpr std::size_t kLongestPath = 107;

  explicit JournalSocket(std::string path) : path_(std::move(path)) {}

  const std::string& path() const { return path_; }
  /// False, with errno, when nobody listens there.
  bool connect() noexcept;
  /// Sends a message of these parts, waiting for room until SinkClock::steady_milliseconds() reaches `deadline`. False,
  /// with errno, when journald has not got it: EAGAIN where it was waited for in vain.
  bool send(std::span<iovec> parts, long long deadline) noexcept;
  void close() { socket_.reset(); }

 private:
  bool send_file(std::span<const iovec> parts, long long deadline) noexcept;
  bool send_message(const msghdr& message, long long deadline) noexcept;

  const std::string path_;
  Descriptor socket_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_JOURNAL_SOCKET_H
