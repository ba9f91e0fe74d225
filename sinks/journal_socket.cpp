#include "sinks/journal_socket.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <ctime>

#include "sinks/descriptor_write.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

constexpr int kWantedBuffer = 8 << 20;  // so that a burst waits for nobody; the system gives what it allows

std::size_t bytes_of(std::span<const iovec> parts) {
  std::size_t bytes = 0;
  for (const iovec& part : parts) bytes += part.iov_len;
  return bytes;
}

bool has_no_room(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

/// Who listened there has gone, or the socket has: a program may close all of its descriptors.
bool is_cut_off(int error) {
  return error == ECONNREFUSED || error == ECONNRESET || error == ENOTCONN || error == EPIPE || error == EDESTADDRREQ ||
         error == EBADF || error == ENOTSOCK;
}

bool write_all(int file, std::span<const iovec> parts) {
  for (const iovec& part : parts) {
    const char* at = static_cast<const char*>(part.iov_base);
    for (std::size_t left = part.iov_len; left != 0;) {
      const ssize_t written = ::write(file, at, left);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return false;
      at += written;
      left -= static_cast<std::size_t>(written);
    }
  }
  return true;
}

/// Others of the socket's writers may take the room before we do.
void pause_shortly() {
  const std::timespec pause = {0, 1'000'000};
  nanosleep(&pause, nullptr);
}

/// False with errno.
bool send_waiting(int socket, const msghdr& message, long long deadline) {
  bool has_waited = false;
  while (::sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
    if (errno == EINTR) continue;
    if (!has_no_room(errno)) return false;
    if (has_waited && SinkClock::steady_milliseconds() >= deadline) return false;
    if (has_waited) pause_shortly();
    if (!wait_for_room(socket, deadline)) return false;
    has_waited = true;
  }
  return true;
}

}  // namespace

bool JournalSocket::connect() noexcept {
  Descriptor made(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!made) return false;
  ::setsockopt(made.get(), SOL_SOCKET, SO_SNDBUF, &kWantedBuffer, sizeof kWantedBuffer);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path_.data(), path_.size());
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path_.size() + 1);
  if (::connect(made.get(), reinterpret_cast<const sockaddr*>(&address), size) != 0) return false;
  socket_.swap(made);
  return true;
}

bool JournalSocket::send(std::span<iovec> parts, long long deadline) noexcept {
  if (bytes_of(parts) > kLongestDatagram) return send_file(parts, deadline);
  msghdr message = {};
  message.msg_iov = parts.data();
  message.msg_iovlen = parts.size();
  if (send_message(message, deadline)) return true;
  return (errno == EMSGSIZE || errno == ENOBUFS) && send_file(parts, deadline);
}

/// Only what nobody can change any more is read by journald.
bool JournalSocket::send_file(std::span<const iovec> parts, long long deadline) noexcept {
  const Descriptor file(::memfd_create("qzlog-journal", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file || !write_all(file.get(), parts)) return false;
  if (::fcntl(file.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0) return false;
  alignas(cmsghdr) char room[CMSG_SPACE(sizeof(int))] = {};
  msghdr message = {};
  message.msg_control = room;
  message.msg_controllen = sizeof room;
  cmsghdr* const header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof(int));
  const int descriptor = file.get();
  std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
  return send_message(message, deadline);
}

/// A number that has become that of something else is not ours to close.
bool JournalSocket::send_message(const msghdr& message, long long deadline) noexcept {
  if (socket_ && send_waiting(socket_.get(), message, deadline)) return true;
  if (socket_ && !is_cut_off(errno)) return false;
  if (socket_ && (errno == EBADF || errno == ENOTSOCK)) static_cast<void>(socket_.release());
  return connect() && send_waiting(socket_.get(), message, deadline);
}

}  // namespace qzlog
