#ifndef QZLOG_SHIP_SYSLOG_HOST_ADDRESSES_H
#define QZLOG_SHIP_SYSLOG_HOST_ADDRESSES_H

#include <sys/socket.h>

#include <chrono>
#include <string>
#include <vector>

namespace qzlog_ship {

using Deadline = std::chrono::steady_clock::time_point;

struct HostAddress {
  sockaddr_storage storage = {};
  socklen_t length = 0;
};

/// The addresses for TCP connections to a host, in the order in which they are to be tried; at least one. A name server
/// is asked in a thread of its own, which is left alone at the deadline. Throws a failure for now.
std::vector<HostAddress> find_addresses(const std::string& host, const std::string& port, Deadline deadline);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_SYSLOG_HOST_ADDRESSES_H
