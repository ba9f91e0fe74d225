#include "sinks/host_lookup.h"

#include <netdb.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "sinks/silent_thread.h"
#include "sinks/sink_clock.h"
#include "sinks/wake_place.h"

namespace qzlog {

namespace {

enum class Ask { kNobody, kNameServers };

/// What getaddrinfo finds. EAI_NONAME for a name where nobody is asked.
int look_up(const std::string& host, const std::string& port, int socket_type, Ask ask, HostLookup::Found& found) {
  addrinfo hints = {};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = socket_type;
  hints.ai_flags = AI_NUMERICSERV | (ask == Ask::kNobody ? AI_NUMERICHOST : AI_ADDRCONFIG);
  addrinfo* list = nullptr;
  const int error = getaddrinfo(host.c_str(), port.c_str(), &hints, &list);
  if (error != 0) return error;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, &freeaddrinfo);
  for (const addrinfo* each = list; each != nullptr; each = each->ai_next) {
    SocketAddress address;
    std::memcpy(&address.storage, each->ai_addr, each->ai_addrlen);
    address.length = each->ai_addrlen;
    found.addresses.push_back(address);
  }
  return 0;
}

std::string text_of(int error, int error_number) {
  char room[128];
  return error == EAI_SYSTEM ? strerror_r(error_number, room, sizeof room) : gai_strerror(error);
}

}  // namespace

struct HostLookup::Task {
  std::string host;
  std::string port;
  int socket_type = 0;

  Found found;  // the thread's until is_done
  std::atomic<bool> is_done{false};
  WakePlace done;

  void finish() noexcept {
    is_done.store(true, std::memory_order_release);
    done.wake_all();
  }
};

void HostLookup::begin(const std::string& host, unsigned port, int socket_type) {
  if (task_ != nullptr) return;
  auto task = std::make_shared<Task>();
  task->host = host;
  task->port = std::to_string(port);
  task->socket_type = socket_type;
  if (look_up(host, task->port, socket_type, Ask::kNobody, task->found) == 0) {
    task->finish();
  } else {
    auto share = std::make_unique<std::shared_ptr<Task>>(task);
    if (start_silent_thread(&run, share.get())) {
      static_cast<void>(share.release());
    } else {
      task->found.failure = "there is no thread to look it up";
      task->finish();
    }
  }
  task_ = std::move(task);
}

void* HostLookup::run(void* task) {
  const std::unique_ptr<std::shared_ptr<Task>> share(static_cast<std::shared_ptr<Task>*>(task));
  Task& own = **share;
  try {
    errno = 0;
    const int error = look_up(own.host, own.port, own.socket_type, Ask::kNameServers, own.found);
    if (error != 0) own.found.failure = text_of(error, errno);
  } catch (const std::bad_alloc&) {
    own.found.addresses.clear();  // and without a reason
  }
  own.finish();
  return nullptr;
}

bool HostLookup::wait(long long deadline) noexcept {
  while (task_ != nullptr) {
    const std::uint32_t ticket = task_->done.ticket();
    if (task_->is_done.load(std::memory_order_acquire)) return true;
    const long long left = deadline - SinkClock::steady_milliseconds();
    if (left <= 0) return false;
    task_->done.wait(ticket, left);
  }
  return false;
}

HostLookup::Found HostLookup::take() {
  const std::shared_ptr<Task> task = std::exchange(task_, nullptr);
  return std::move(task->found);
}

}  // namespace qzlog
