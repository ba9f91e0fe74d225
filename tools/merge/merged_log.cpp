#include "tools/merge/merged_log.h"

#include <algorithm>
#include <cstring>

#include "tools/logs/unreadable_input.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;
// Longer lines are no entries: the reader says so.
constexpr std::size_t kMostLineBytes = std::size_t{16} << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Thrown to the reader when it has seen the lines that it may, and to whoever called it.
struct NoTurn {};

bool is_blank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

bool MergedLog::find_next() {
  for (;;) {
    if (file_ == nullptr && !open_next()) return false;
    try {
      while (cut()) {
        if (is_too_long_) return true;
        if (is_blank(line())) continue;
        moment_ = std::max(moment_, moments_.of(line()).value_or(moment_));
        if (is_wanted()) return true;
      }
    } catch (const UnreadableInput& failure) {
      fail(failure.what());
    }
    close();
  }
}

bool MergedLog::read(qz_LOG_EntryLine& line) {
  given_ = next_;
  if (reading_.before_line && !is_too_long_) reading_.before_line(this->line());
  try {
    return reader_->Next(line);
  } catch (const NoTurn&) {
    return false;
  } catch (const UnreadableInput& failure) {
    fail(failure.what());
    close();
    return false;
  }
}

void MergedLog::fail(const std::string& reason) {
  has_failed_ = true;
  reading_.fail(reason);
}

bool MergedLog::open_next() {
  while (file_ == nullptr && next_file_ < files_.paths.size()) {
    const std::string& path = files_.paths[next_file_++];
    try {
      file_ = reading_.open(path, files_.were_found);
    } catch (const UnreadableInput& failure) {
      fail(failure.what());
    }
    if (file_ == nullptr) continue;
    reader_.emplace(qz_LOG_EntryReader::FromSource(*this, display_name(path).c_str(), reading_.handler));
    reader_->SetLineChoice(reading_.choice);
  }
  return file_ != nullptr;
}

void MergedLog::close() {
  reader_.reset();
  file_.reset();
  begin_ = next_ = searched_ = end_ = given_ = 0;
  at_start_ = has_line_feed_ = true;
  at_end_ = is_too_long_ = false;
}

/// The next line of the file; false at its end.
bool MergedLog::cut() {
  for (;;) {
    const void* const line_feed =
        end_ > searched_ ? std::memchr(bytes_.data() + searched_, '\n', end_ - searched_) : nullptr;
    if (line_feed != nullptr) {
      take(static_cast<std::size_t>(static_cast<const char*>(line_feed) - bytes_.data()), true);
      return true;
    }
    searched_ = end_;
    if ((at_end_ && next_ < end_) || end_ - next_ > kMostLineBytes) {
      take(end_, false);
      return true;
    }
    if (at_end_) return false;
    fill();
  }
}

void MergedLog::take(std::size_t end, bool has_line_feed) {
  line_begin_ = next_;
  line_end_ = end;
  next_ = end + (has_line_feed ? 1 : 0);
  searched_ = next_;
  has_line_feed_ = has_line_feed;
  is_too_long_ = line_end_ - line_begin_ > kMostLineBytes;
}

// As the reader decides it.
bool MergedLog::is_wanted() {
  if (reading_.choice == nullptr) return true;
  const bool is_taken = has_line_feed_ ? reading_.choice->TakesLine(line().data(), line().size())
                                       : reading_.choice->TakesLastLine(line().data(), line().size());
  if (!is_taken) ++refused_;
  return is_taken;
}

void MergedLog::fill() {
  make_room();
  const std::size_t count = file_->Read(bytes_.data() + end_, bytes_.size() - end_);
  at_end_ = count == 0;
  end_ += count;
  if (at_start_) skip_byte_order_mark();
}

// The reader skips it too. It may come in pieces: a beginning of it is no line yet.
void MergedLog::skip_byte_order_mark() {
  const std::string_view first(bytes_.data(), end_);
  if (!at_end_ && first.size() < kByteOrderMark.size() && kByteOrderMark.starts_with(first)) return;
  at_start_ = false;
  if (!first.starts_with(kByteOrderMark)) return;
  next_ = kByteOrderMark.size();
  searched_ = next_;
}

void MergedLog::make_room() {
  if (bytes_.size() - end_ >= kBlockBytes / 2) return;
  if (begin_ < next_) pass_over();
  if (begin_ < end_) std::memmove(bytes_.data(), bytes_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  searched_ -= begin_;
  begin_ = next_ = given_ = 0;
  if (bytes_.size() - end_ >= kBlockBytes / 2) return;
  bytes_.resize(std::min(std::max(bytes_.size() * 2, kBlockBytes), kMostLineBytes + kBlockBytes));
}

/// Has the reader count the lines that are not wanted, of which it makes nothing.
void MergedLog::pass_over() {
  given_ = next_;
  try {
    reader_->Next(reading_.nothing);
  } catch (const NoTurn&) {
  }
}

std::size_t MergedLog::Read(char* buffer, std::size_t size) {
  if (begin_ < given_) {
    const std::size_t count = std::min(size, given_ - begin_);
    std::memcpy(buffer, bytes_.data() + begin_, count);
    begin_ += count;
    return count;
  }
  if (has_line_feed_) throw NoTurn();
  return is_too_long_ && !at_end_ ? read_long_line(buffer, size) : 0;
}

/// Goes on with a line of which there is more than is kept.
std::size_t MergedLog::read_long_line(char* buffer, std::size_t size) {
  const std::size_t count = file_->Read(buffer, std::min(size, kBlockBytes));
  at_end_ = count == 0;
  const void* const line_feed = std::memchr(buffer, '\n', count);
  if (line_feed == nullptr) return count;
  const std::size_t taken = static_cast<std::size_t>(static_cast<const char*>(line_feed) - buffer) + 1;
  std::memcpy(bytes_.data(), buffer + taken, count - taken);
  begin_ = next_ = searched_ = given_ = 0;
  end_ = count - taken;
  has_line_feed_ = true;
  is_too_long_ = false;
  return taken;
}

}  // namespace qzlog_tool
