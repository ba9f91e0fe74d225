#include "ship/syslog/host_addresses.h"

#include <netdb.h>

#include <chrono>
#include <cstring>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

#include "ship/plugin/plugin_call.h"
#include "ship/plugin/signals_blocked.h"

namespace qzlog_ship {

namespace {

struct Found {
  std::vector<HostAddress> addresses;
  int error = 0;
};

Found look_up(const std::string& host, const std::string& port, int flags) {
  addrinfo wanted = {};
  wanted.ai_family = AF_UNSPEC;
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = flags | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  Found found;
  found.error = ::getaddrinfo(host.c_str(), port.c_str(), &wanted, &list);
  if (found.error != 0) return found;
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, &::freeaddrinfo);
  for (const addrinfo* each = list; each != nullptr; each = each->ai_next) {
    HostAddress& address = found.addresses.emplace_back();
    address.length = each->ai_addrlen;
    std::memcpy(&address.storage, each->ai_addr, each->ai_addrlen);
  }
  return found;
}

/// In a thread of its own, which takes as long as name servers let it.
std::shared_future<Found> begin_look_up(const std::string& host, const std::string& port) {
  std::promise<Found> promise;
  std::shared_future<Found> result = promise.get_future();
  const SignalsBlocked blocked;
  std::thread([host, port, promise = std::move(promise)]() mutable {
    try {
      promise.set_value(look_up(host, port, 0));
    } catch (...) {
      promise.set_exception(std::current_exception());
    }
  }).detach();
  return result;
}

/// The latest one, which goes on when nobody waits for it any more: who asks the same again waits for it, so that
/// threads do not pile up where name servers are silent.
struct LookUp {
  std::mutex mutex;
  std::string host;
  std::string port;
  std::shared_future<Found> result;
};

std::shared_future<Found> look_up_under_way(const std::string& host, const std::string& port) {
  static LookUp& latest = *new LookUp;  // stays for a thread that is still there when the process ends
  const std::lock_guard<std::mutex> lock(latest.mutex);
  const bool is_same = latest.result.valid() && latest.host == host && latest.port == port;
  const bool is_under_way = is_same && latest.result.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
  if (!is_under_way) {
    latest.result = begin_look_up(host, port);
    latest.host = host;
    latest.port = port;
  }
  return latest.result;
}

Found look_up_until(const std::string& host, const std::string& port, Deadline deadline) {
  const std::shared_future<Found> result = look_up_under_way(host, port);
  if (result.wait_until(deadline) != std::future_status::ready) {
    fail_for_now("no name server says in time where '" + host + "' is");
  }
  return result.get();
}

}  // namespace

std::vector<HostAddress> find_addresses(const std::string& host, const std::string& port, Deadline deadline) {
  Found found = look_up(host, port, AI_NUMERICHOST);
  if (found.error != 0) found = look_up_until(host, port, deadline);
  if (found.error != 0) fail_for_now("'" + host + "' is not found: " + ::gai_strerror(found.error));
  return std::move(found.addresses);
}

}  // namespace qzlog_ship
