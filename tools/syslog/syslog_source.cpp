#include "tools/syslog/syslog_source.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "tools/syslog/syslog_entry.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kReadAtOnce = 64U << 10;

/// "N " in front of a message of N bytes, which begins with "<".
struct OctetCount {
  bool is_there = false;
  bool may_be_there = false;  ///< more bytes will tell
  std::size_t digits = 0;
  std::size_t bytes = 0;
};

OctetCount octet_count_of(std::string_view text) {
  constexpr std::size_t kMostDigits = 8;
  OctetCount count;
  const char* const end = text.data() + std::min(text.size(), kMostDigits);
  const std::from_chars_result read = std::from_chars(text.data(), end, count.bytes);
  count.digits = static_cast<std::size_t>(read.ptr - text.data());
  if (text.empty()) count.may_be_there = true;
  if (count.digits == 0 || count.bytes > SyslogSource::kLongestMessage) return count;
  const std::string_view behind = text.substr(count.digits, 2);
  count.is_there = behind == " <";
  count.may_be_there = std::string_view(" <").starts_with(behind);
  return count;
}

}  // namespace

std::size_t SyslogSource::Read(char* buffer, std::size_t size) {
  while (handed_out_ == out_.size()) {
    out_.clear();
    handed_out_ = 0;
    // All that there is, so that the reader is not asked for each line.
    while (out_.size() < kReadAtOnce && take_message()) {
    }
    if (out_.empty() && !read_more()) return 0;
  }
  const std::size_t count = std::min(size, out_.size() - handed_out_);
  std::memcpy(buffer, out_.data() + handed_out_, count);
  handed_out_ += count;
  return count;
}

/// False when there is nothing more to be had of what was read.
bool SyslogSource::read_more() {
  if (is_at_end_) return false;
  bytes_.erase(0, begin_);
  begin_ = 0;
  room_.resize(kReadAtOnce);
  const std::size_t count = messages_.Read(room_.data(), room_.size());
  bytes_.append(room_, 0, count);
  is_at_end_ = count == 0;
  return true;
}

/// False when more of it is to come.
bool SyslogSource::skip_rest_of_line() {
  if (!skips_line_) return true;
  const std::size_t end = unread().find('\n');
  skips_line_ = end == std::string_view::npos;
  begin_ = skips_line_ ? bytes_.size() : begin_ + end + 1;
  return !skips_line_;
}

/// Takes the next message. False when it is not there as a whole.
bool SyslogSource::take_message() {
  if (!skip_rest_of_line()) return false;
  const std::string_view text = unread();
  if (text.empty()) return false;
  OctetCount count;
  if (framing_ != Framing::kLines) count = octet_count_of(text);
  if (!count.is_there && count.may_be_there && !is_at_end_) return false;
  if (framing_ == Framing::kUnknown) framing_ = count.is_there ? Framing::kCounted : Framing::kLines;
  return count.is_there ? take_counted(text, count.digits + 1, count.bytes) : take_line(text);
}

bool SyslogSource::take_counted(std::string_view text, std::size_t begin, std::size_t bytes) {
  if (text.size() < begin + bytes && !is_at_end_) return false;
  const std::string_view message = text.substr(begin, bytes);
  take_whole(message);
  begin_ += begin + message.size();
  return true;
}

bool SyslogSource::take_line(std::string_view text) {
  const std::size_t end = text.find('\n', searched_);
  const bool is_whole = end != std::string_view::npos;
  const bool is_too_long = text.size() > kLongestMessage;
  searched_ = text.size();
  if (!is_whole && !is_too_long && !is_at_end_) return false;
  if (is_too_long) {
    lose(counts_.broken);
    out_ += '\n';
  } else {
    take_whole(text.substr(0, end));
  }
  searched_ = 0;
  skips_line_ = !is_whole;
  begin_ += is_whole ? end + 1 : text.size();
  return true;
}

void SyslogSource::lose(std::uint64_t& count) {
  ++count;
  const std::uint64_t number = counts_.entries + counts_.omitted + counts_.broken + counts_.others;
  if (counts_.first_lost == 0) counts_.first_lost = number;
}

void SyslogSource::take_whole(std::string_view message) {
  switch (find_syslog_entry(message, line_)) {
    case SyslogFound::kLine:
      ++counts_.entries;
      out_ += line_;
      break;
    case SyslogFound::kOmitted:
      lose(counts_.omitted);
      break;
    case SyslogFound::kBroken:
      lose(counts_.broken);
      break;
    case SyslogFound::kNothing:
      ++counts_.others;
  }
  out_ += '\n';
}

}  // namespace qzlog_tool
