#include "lines/line_cutter.h"

#include <algorithm>
#include <cstring>

#include "foundation/allocate.h"

namespace qzlog {

namespace {

constexpr std::size_t kInitialBytes = std::size_t{256} << 10;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

LineCutter::LineCutter(std::string_view bytes, std::size_t maximum_line_bytes) noexcept
    : maximum_line_bytes_(maximum_line_bytes), text_(bytes.data()), end_(bytes.size()), at_end_(true) {
  skip_byte_order_mark();
}

bool LineCutter::next(Line& line) {
  if (skipping_) return skip_to_line_feed(line);
  const char* const line_feed = find_line_feed(scanned_);
  if (line_feed != nullptr) return take(static_cast<std::size_t>(line_feed - text_) - begin_, 1, line);
  scanned_ = end_;
  if (end_ - begin_ > maximum_line_bytes_) {
    skipping_ = true;
    line_offset_ = offset_ + begin_;
    return next(line);
  }
  return at_end_ && begin_ < end_ && take(end_ - begin_, 0, line);
}

/// Null when none stands at `begin` or behind it.
const char* LineCutter::find_line_feed(std::size_t begin) const {
  if (begin == end_) return nullptr;
  return static_cast<const char*>(std::memchr(text_ + begin, '\n', end_ - begin));
}

bool LineCutter::take(std::size_t length, std::size_t separator, Line& line) {
  const bool too_long = length > maximum_line_bytes_;
  const std::size_t kept = too_long ? 0 : length;
  line = Line{std::string_view(text_ + begin_, kept), ++line_number_, offset_ + begin_, too_long, separator != 0};
  begin_ += length + separator;
  scanned_ = begin_;
  return true;
}

bool LineCutter::skip_to_line_feed(Line& line) {
  const char* const line_feed = find_line_feed(begin_);
  begin_ = line_feed != nullptr ? static_cast<std::size_t>(line_feed - text_) + 1 : end_;
  scanned_ = begin_;
  if (line_feed == nullptr && !at_end_) return false;
  skipping_ = false;
  line = Line{{}, ++line_number_, line_offset_, true, line_feed != nullptr};
  return true;
}

void LineCutter::fill() {
  make_room();
  const std::size_t count = std::min(source_->Read(buffer_.get() + end_, capacity_ - end_), capacity_ - end_);
  end_ += count;
  at_end_ = count == 0;
  if (at_start_) skip_byte_order_mark();
}

// A byte order mark may come in pieces: a beginning of it is no line yet.
void LineCutter::skip_byte_order_mark() {
  const std::string_view first(text_, end_);
  if (!at_end_ && first.size() < kByteOrderMark.size() && kByteOrderMark.starts_with(first)) return;
  at_start_ = false;
  if (!first.starts_with(kByteOrderMark)) return;
  begin_ = kByteOrderMark.size();
  scanned_ = begin_;
}

void LineCutter::make_room() {
  if (begin_ > 0) std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
  offset_ += begin_;
  scanned_ -= begin_;
  end_ -= begin_;
  begin_ = 0;
  if (end_ < capacity_) return;
  // One byte more than the longest line, so that a full buffer without a line feed is a line that is too long.
  const std::size_t larger = std::min(std::max(capacity_ * 2, kInitialBytes), maximum_line_bytes_ + 1);
  std::unique_ptr<char[]> moved(new_array<char>(larger));
  if (end_ > 0) std::memcpy(moved.get(), buffer_.get(), end_);
  buffer_ = std::move(moved);
  text_ = buffer_.get();
  capacity_ = larger;
}

}  // namespace qzlog
