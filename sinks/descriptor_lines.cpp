#include "sinks/descriptor_lines.h"

#include <unistd.h>

#include <cerrno>

#include "sinks/setting_checks.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

constexpr unsigned kLongestWait = 60'000;

unsigned checked_wait(unsigned milliseconds) {
  with_memory([=] { require_range("longest_wait_milliseconds", milliseconds, 0, kLongestWait); });
  return milliseconds;
}

}  // namespace

DescriptorLines::DescriptorLines(int descriptor, unsigned longest_wait_milliseconds)
    : descriptor_(descriptor),
      longest_wait_(checked_wait(longest_wait_milliseconds)),
      kind_(check_descriptor(descriptor)) {}

DescriptorLines::~DescriptorLines() {
  if (is_owned_) ::close(descriptor_);
}

/// Where nobody reads, each line would be waited for again: only the first is.
std::size_t DescriptorLines::take(std::string_view line, unsigned /*level*/) {
  const long long now = SinkClock::steady_milliseconds();
  const StreamHold hold(lock_, now + longest_wait_);
  if (!hold || is_closed_) return 0;
  return write_line(line, is_stalled_ ? now : now + longest_wait_) ? line.size() : 0;
}

bool DescriptorLines::write_line(std::string_view line, long long deadline) {
  if (has_fragment_ && !end_fragment(deadline)) return false;
  const std::size_t written = write_to_descriptor(descriptor_, kind(), line, deadline);
  const bool is_whole = written == line.size();
  is_stalled_ = !is_whole && (errno == EAGAIN || errno == EWOULDBLOCK);
  has_fragment_ = written != 0 && !is_whole;
  return is_whole;
}

bool DescriptorLines::end_fragment(long long deadline) {
  has_fragment_ = write_to_descriptor(descriptor_, kind(), "\n", deadline) == 0;
  return !has_fragment_;
}

/// What was written is the system's; only a fragment is left to do.
bool DescriptorLines::flush(unsigned milliseconds) {
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  const StreamHold hold(lock_, deadline);
  return hold && (is_closed_ || !has_fragment_ || end_fragment(deadline));
}

unsigned long long DescriptorLines::close(unsigned milliseconds) {
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  const bool was_closed = is_closed_.exchange(true);
  const StreamHold hold(lock_, deadline);
  if (!hold) return 1;  // a line is being written
  if (has_fragment_ && !was_closed) end_fragment(deadline);
  return 0;
}

}  // namespace qzlog
