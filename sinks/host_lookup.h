#ifndef QZLOG_SINKS_HOST_LOOKUP_H
#define QZLOG_SINKS_HOST_LOOKUP_H

#include <sys/socket.h>

#include <memory>
#include <string>
#include <vector>

#include "foundation/no_copies.h"

namespace qzlog {

/// An address of a socket.
struct SocketAddress {
  sockaddr_storage storage = {};
  socklen_t length = 0;

  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

/// Finds the addresses of a host. What may ask the network does so in a thread of its own, which nobody waits for at
/// the end: a name server takes as long as it likes. One thread at a time.
class HostLookup : public qz_UTIL_no_inadvertant_copies {
 public:
  struct Found {
    std::vector<SocketAddress> addresses;  ///< none: then
    std::string failure;                   ///< says why
  };

  /// Begins to look up, unless that is under way. `socket_type` is SOCK_STREAM or SOCK_DGRAM. std::bad_alloc.
  void begin(const std::string& host, unsigned port, int socket_type);
  /// Whether it is done, which is waited for until SinkClock::steady_milliseconds() reaches `deadline`.
  bool wait(long long deadline) noexcept;
  /// What was found; it is done.
  Found take();

 private:
  struct Task;
  static void* run(void* task);

  std::shared_ptr<Task> task_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_HOST_LOOKUP_H
