// How messages go through a connection, and how it ends.
#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "sinks/descriptor_write.h"
#include "sinks/sink_clock.h"
#include "sinks/syslog_connection.h"

namespace qzlog {

namespace {

constexpr bool is_for_lack_of_room(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

/// The message alone is refused; the connection is as it was.
constexpr bool is_about_message(int error) { return error == EMSGSIZE || error == ENOBUFS || error == ENOMEM; }

/// A connection that lived so long was a good one: another one is made at once.
constexpr long long kLongEnough = 1000;

/// Of what a server says, at one look: one that never stops is not to keep the application.
constexpr int kMostReads = 64;

}  // namespace

/// A connection that turns out to be broken is made again, once: the server may have been started again.
bool SyslogConnection::send(std::string_view bytes, const SentMessage& message, long long deadline) {
  for (unsigned attempts = 0; attempts < 2; ++attempts) {
    if (!open(deadline)) return false;
    const Result result = is_tcp() ? send_once(bytes, message, deadline) : send_datagram(bytes, message, deadline);
    if (result == Result::kTaken) {
      is_stalled_ = false;
      failure_.clear();
      return true;
    }
    if (result == Result::kNotTaken) return false;
    drop();
  }
  return false;
}

/// What the stream took of a message has to be followed by its end.
SyslogConnection::Result SyslogConnection::send_once(std::string_view bytes, const SentMessage& message,
                                                     long long deadline) {
  if (is_ended_by_peer()) return Result::kBroken;
  if (const Result result = send_rest(deadline); result != Result::kTaken) return result;
  rest_.reserve(bytes.size());
  const std::size_t written = write_to_descriptor(socket_.get(), StreamKind::kSocket, bytes, deadline);
  if (written != bytes.size()) {
    const Result result = result_of(errno);
    if (written == 0 || result != Result::kNotTaken) return result;
    rest_.assign(bytes.substr(written));
  }
  sent_.add(message);
  return Result::kTaken;
}

SyslogConnection::Result SyslogConnection::send_rest(long long deadline) {
  if (rest_.empty()) return Result::kTaken;
  const std::size_t written = write_to_descriptor(socket_.get(), StreamKind::kSocket, rest_, deadline);
  const Result result = written == rest_.size() ? Result::kTaken : result_of(errno);
  rest_.erase(0, written);
  return result;
}

/// Of a write that did not take all.
SyslogConnection::Result SyslogConnection::result_of(int error) {
  if (is_for_lack_of_room(error)) is_stalled_ = true;
  char room[128];
  failure_ = strerror_r(error, room, sizeof room);
  return is_for_lack_of_room(error) || is_about_message(error) ? Result::kNotTaken : Result::kBroken;
}

/// An error may be about a datagram that went before: nobody takes what is sent to that port.
SyslogConnection::Result SyslogConnection::send_datagram(std::string_view bytes, const SentMessage& message,
                                                         long long deadline) {
  for (unsigned attempts = 0; attempts < 2; ++attempts) {
    if (write_to_descriptor(socket_.get(), StreamKind::kSocket, bytes, deadline) == bytes.size()) {
      last_datagram_ = message;
      has_last_datagram_ = true;
      return Result::kTaken;
    }
    const int error = errno;
    if (!is_udp() || error != ECONNREFUSED) return result_of(error);
    result_of(error);
    forget_refused_datagram();
  }
  return Result::kNotTaken;
}

void SyslogConnection::forget_refused_datagram() {
  if (has_last_datagram_) lost_.message_lost(last_datagram_);
  has_last_datagram_ = false;
}

/// Asked once a millisecond, and before what comes first after a while. Servers have nothing to say, but some do.
bool SyslogConnection::is_ended_by_peer() {
  const long long now = SinkClock::steady_milliseconds();
  if (now == looked_at_) return false;
  looked_at_ = now;
  char said[512];
  for (int reads = 0; reads < kMostReads; ++reads) {
    const ssize_t count = ::recv(socket_.get(), said, sizeof said, MSG_DONTWAIT);
    if (count > 0 || (count < 0 && errno == EINTR)) continue;
    if (count < 0 && is_for_lack_of_room(errno)) return false;
    failure_ = "the server has ended the connection";
    return true;
  }
  return false;  // it says more than anybody reads: what goes to it may yet be taken
}

/// Bytes of the stream that the other side's system has not confirmed.
std::size_t SyslogConnection::unconfirmed() const {
  int bytes = 0;
  if (::ioctl(socket_.get(), SIOCOUTQ, &bytes) != 0) return 0;
  return static_cast<std::size_t>(bytes) + rest_.size();
}

unsigned long long SyslogConnection::tell_unconfirmed() noexcept {
  if (!is_tcp() || !socket_) return 0;
  unsigned long long entries = 0;
  sent_.for_each_in_last(unconfirmed(), [&](const SentMessage& message) {
    lost_.message_lost(message);
    if (message.told == 0) ++entries;
  });
  return entries;
}

void SyslogConnection::drop() noexcept {
  tell_unconfirmed();
  rest_.clear();
  sent_.clear();
  socket_.reset();
  state_ = State::kDown;
  const bool was_good = SinkClock::steady_milliseconds() - up_since_ >= kLongEnough;
  if (was_good) {
    pause_ = 0;
    next_attempt_ = 0;
  } else {
    pause_before_next();
  }
}

bool SyslogConnection::flush(long long deadline) {
  if (!is_tcp() || state_ != State::kUp) return true;
  for (;;) {
    const Result result = is_ended_by_peer() ? Result::kBroken : send_rest(deadline);
    if (result == Result::kBroken) {
      drop();
      return false;
    }
    if (unconfirmed() == 0) return true;
    if (SinkClock::steady_milliseconds() >= deadline) return false;
    const std::timespec pause = {0, 1'000'000};
    nanosleep(&pause, nullptr);
  }
}

/// What is under way still goes: the system sees to it.
unsigned long long SyslogConnection::close(long long deadline) {
  flush(deadline);
  const unsigned long long left = tell_unconfirmed();
  rest_.clear();
  sent_.clear();
  socket_.reset();
  state_ = State::kDown;
  return left;
}

}  // namespace qzlog
