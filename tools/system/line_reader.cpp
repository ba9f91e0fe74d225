#include "tools/system/line_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kInitialBytes = std::size_t{256} << 10;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Zeroed, so that a reader that looks into the padding sees defined bytes.
std::unique_ptr<char[]> allocate(std::size_t capacity) {
  return std::make_unique<char[]>(capacity + LineReader::kPaddingBytes);
}

}  // namespace

LineReader::LineReader(int descriptor, std::string file_name, std::size_t maximum_line_bytes)
    : descriptor_(descriptor),
      file_name_(std::move(file_name)),
      maximum_line_bytes_(maximum_line_bytes),
      capacity_(std::min(kInitialBytes, maximum_line_bytes + 1)),
      buffer_(allocate(capacity_)) {}

bool LineReader::next(Line& line) {
  if (skipping_) {
    if (!skip_to_line_feed()) return false;
    line = Line{{}, line_number_, true};
    return true;
  }
  const char* const line_feed = static_cast<const char*>(std::memchr(buffer_.get() + scanned_, '\n', end_ - scanned_));
  if (line_feed != nullptr) return take(static_cast<std::size_t>(line_feed - buffer_.get()) - begin_, 1, line);
  scanned_ = end_;
  if (end_ - begin_ > maximum_line_bytes_) {
    skipping_ = true;
    return next(line);
  }
  return at_end_ && begin_ < end_ && take(end_ - begin_, 0, line);
}

bool LineReader::take(std::size_t length, std::size_t separator, Line& line) {
  const bool too_long = length > maximum_line_bytes_;
  const std::size_t kept = too_long ? 0 : length;
  line = Line{std::string_view(buffer_.get() + begin_, kept), ++line_number_, too_long};
  begin_ += length + separator;
  scanned_ = begin_;
  return true;
}

bool LineReader::skip_to_line_feed() {
  const char* const start = buffer_.get() + begin_;
  const char* const line_feed = static_cast<const char*>(std::memchr(start, '\n', end_ - begin_));
  begin_ = line_feed != nullptr ? static_cast<std::size_t>(line_feed - buffer_.get()) + 1 : end_;
  scanned_ = begin_;
  if (line_feed == nullptr && !at_end_) return false;
  skipping_ = false;
  ++line_number_;
  return true;
}

void LineReader::fill() {
  make_room();
  const bool at_start = line_number_ == 0 && end_ == 0;
  // A byte order mark may come in pieces.
  do {
    const std::size_t count = read_some(descriptor_, buffer_.get() + end_, capacity_ - end_, file_name_);
    end_ += count;
    at_end_ = count == 0;
  } while (at_start && !at_end_ && end_ < kByteOrderMark.size() &&
           kByteOrderMark.starts_with(std::string_view(buffer_.get(), end_)));
  if (at_start) skip_byte_order_mark();
}

void LineReader::skip_byte_order_mark() {
  if (!std::string_view(buffer_.get(), end_).starts_with(kByteOrderMark)) return;
  begin_ = kByteOrderMark.size();
  scanned_ = begin_;
}

void LineReader::make_room() {
  std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
  scanned_ -= begin_;
  end_ -= begin_;
  begin_ = 0;
  if (end_ < capacity_) return;
  // One byte more than the longest line, so that a full buffer without a line feed is a line that is too long.
  const std::size_t larger = std::min(capacity_ * 2, maximum_line_bytes_ + 1);
  std::unique_ptr<char[]> moved = allocate(larger);
  std::memcpy(moved.get(), buffer_.get(), end_);
  buffer_ = std::move(moved);
  capacity_ = larger;
}

}  // namespace qzlog_tool
