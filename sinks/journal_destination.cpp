#include "sinks/journal_destination.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "qzlog/qz_exception.h"
#include "sinks/journal_names.h"
#include "sinks/setting_checks.h"
#include "sinks/sink_clock.h"
#include "sinks/writer_name.h"

namespace qzlog {

namespace {

constexpr unsigned kLongestWait = 60'000;
constexpr std::size_t kFieldBeginning = kJournalEntryField.size() + 1;

[[noreturn]] void throw_unreachable(const std::string& path, int error) {
  char reason[128];
  const std::string text = "The journal's socket " + path + " cannot be reached: ";
  throw QZX_logging_file_operation_failed((text + strerror_r(error, reason, sizeof reason)).c_str(), 0);
}

}  // namespace

JournalDestination::JournalDestination(const std::string& path, unsigned longest_wait_milliseconds)
    : longest_wait_(longest_wait_milliseconds), socket_(path) {
  with_memory([&] {
    require_range("longest_wait_milliseconds", longest_wait_milliseconds, 0, kLongestWait);
    become_writer();
    if (!socket_.connect()) throw_unreachable(path, errno);
  });
}

/// A process that fork made is another writer with numbers of its own.
void JournalDestination::become_writer() {
  envelope_.emplace(new_writer_name());
  seq_ = 0;
  is_stalled_ = false;
  writer_ = getpid();
}

/// Where journald does not read, each message would be waited for again: only the first is.
std::size_t JournalDestination::take(std::string_view text, unsigned /*level*/) {
  const long long now = SinkClock::steady_milliseconds();
  const StreamHold hold(lock_, now + longest_wait_);
  if (!hold || is_closed_) return 0;
  if (writer_ != getpid()) [[unlikely]]
    become_writer();
  return send(text, is_stalled_ ? now : now + longest_wait_);
}

std::size_t JournalDestination::send(std::string_view text, long long deadline) {
  char beginning[kFieldBeginning + LineEnvelope::kMaxHead];
  std::memcpy(beginning, kJournalEntryField.data(), kJournalEntryField.size());
  beginning[kJournalEntryField.size()] = '=';
  const char* const end = envelope_->write_head(beginning + kFieldBeginning, seq_ + 1, SinkClock::now());
  // What is sent is not changed.
  iovec parts[] = {{beginning, static_cast<std::size_t>(end - beginning)},
                   {const_cast<char*>(text.data()), text.size()}};
  const bool is_sent = socket_.send(parts, deadline);
  is_stalled_ = !is_sent && (errno == EAGAIN || errno == EWOULDBLOCK);
  if (!is_sent) return 0;
  ++seq_;
  return parts[0].iov_len + parts[1].iov_len;
}

/// What was sent is journald's.
bool JournalDestination::flush(unsigned /*milliseconds*/) { return true; }

unsigned long long JournalDestination::close(unsigned milliseconds) {
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  is_closed_ = true;
  const StreamHold hold(lock_, deadline);
  if (!hold) return 1;  // a message is being sent
  socket_.close();
  return 0;
}

}  // namespace qzlog
