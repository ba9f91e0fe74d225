#include "tools/ship/shipped_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "tools/compiler/text/utf8_text.h"
#include "tools/logs/unreadable_input.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kBlock = std::size_t{256} << 10;
constexpr std::uint64_t kMostSeenAtOnce = std::uint64_t{64} << 20;  // of a line that is too long

[[noreturn]] void refuse(const std::string& path, int error) {
  throw UnreadableInput("cannot read '" + path + "': " + std::strerror(error));
}

bool is_blank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

ShippedFile::ShippedFile(FileDescriptor file, std::shared_ptr<FileProgress> progress)
    : file_(std::move(file)), progress_(std::move(progress)), block_begin_(progress_->settled) {
  ask_status();
}

void ShippedFile::ask_status() {
  struct stat status = {};
  if (::fstat(file_.get(), &status) != 0) refuse(progress_->path, errno);
  size_ = static_cast<std::uint64_t>(status.st_size);
  is_deleted_ = status.st_nlink == 0;
}

std::size_t ShippedFile::read_at(std::uint64_t offset, char* buffer, std::size_t size) const {
  for (;;) {
    const ssize_t count = ::pread(file_.get(), buffer, size, static_cast<off_t>(offset));
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) refuse(progress_->path, errno);
  }
}

bool ShippedFile::read(LineTaker& taker) {
  Step step = Step::kGoOn;
  while (step == Step::kGoOn) step = give_out(taker) ? read_some(taker) : Step::kEnough;
  return step != Step::kEnough;
}

/// After all of the block was given out.
ShippedFile::Step ShippedFile::read_some(LineTaker& taker) {
  ask_status();
  if (size_ < position()) begin_again(taker);
  if (size_ == position()) return Step::kNothingMore;
  if (read_block()) {
    file_bytes_ = block_.size();
    verdicts_ = taker.judge(block_);
    latest_growth_ = Clock::now();
    return Step::kGoOn;
  }
  if (block_.size() > kLongestLine) return skip_long_line(taker);
  drop_block();  // the line goes on: it is read again when there is more
  return Step::kNothingMore;
}

// What stood there was settled, or is on its way: nothing is delivered twice but what a writer writes again.
void ShippedFile::begin_again(LineTaker& taker) {
  taker.warn("'" + progress_->path + "' became shorter: it is delivered from its beginning");
  block_begin_ = 0;
  long_line_seen_ = 0;
}

/// Reads whole lines. False where not even one ends: the block then holds as much of it as there is, or more than a
/// line may have.
bool ShippedFile::read_block() {
  drop_block();
  for (std::size_t room = kBlock;; room *= 4) {
    const std::size_t held = block_.size();
    block_.resize(std::min(room, kLongestLine + kBlock));
    std::size_t count = 0;
    try {
      count = read_at(block_begin_ + held, block_.data() + held, block_.size() - held);
    } catch (...) {
      drop_block();  // nothing of it was read: it would be given out as lines
      throw;
    }
    const bool is_all = count < block_.size() - held;
    block_.resize(held + count);
    const std::size_t end = block_.rfind('\n');
    if (end != std::string::npos) {
      block_.resize(end + 1);
      return true;
    }
    if (is_all || block_.size() > kLongestLine) return false;
  }
}

void ShippedFile::drop_block() {
  block_begin_ += std::min(given_, file_bytes_);
  std::string().swap(block_);  // an assignment would keep the room
  file_bytes_ = 0;
  given_ = 0;
  line_ = 0;
  verdicts_.clear();
}

/// The block holds the beginning of a line that has too much.
ShippedFile::Step ShippedFile::skip_long_line(LineTaker& taker) {
  std::uint64_t end = std::max(block_begin_ + block_.size(), long_line_seen_);
  const std::uint64_t enough = end + kMostSeenAtOnce;
  drop_block();
  std::string piece(kBlock, ' ');
  for (;; long_line_seen_ = end) {
    const std::size_t count = read_at(end, piece.data(), piece.size());
    if (count == 0) return Step::kNothingMore;  // it has no end yet
    const std::size_t line_feed = std::string_view(piece).substr(0, count).find('\n');
    if (line_feed == std::string_view::npos) {
      if (taker.must_end() || end > enough) return Step::kEnough;  // others wait
      end += count;
      continue;
    }
    const ReadLine at = {progress_.get(), block_begin_, end + line_feed + 1};
    if (!taker.take_long_line(at)) return Step::kEnough;
    block_begin_ = at.end;
    long_line_seen_ = 0;
    return Step::kGoOn;
  }
}

/// False when the taker has enough.
bool ShippedFile::give_out(LineTaker& taker) {
  while (given_ < block_.size()) {
    const std::size_t end = block_.find('\n', given_);
    const ReadLine at = {progress_.get(), position(), block_begin_ + std::min(end + 1, file_bytes_)};
    if (!give_out_line(std::string_view(block_).substr(given_, end - given_), at, taker)) return false;
    given_ = end + 1;
    ++line_;
  }
  drop_block();
  return true;
}

bool ShippedFile::give_out_line(std::string_view line, const ReadLine& at, LineTaker& taker) {
  static const LineVerdict wanted;
  if (at.begin == 0) line = qzlog_compiler::without_byte_order_mark(line);
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (is_blank(line)) return true;
  if (line.size() > kLongestLine) return taker.take_long_line(at);
  return taker.take(line, line_ < verdicts_.size() ? verdicts_[line_] : wanted, at);
}

// Of a writer that was ended within the line, or that leaves the last line without an end.
bool ShippedFile::read_rest(LineTaker& taker) {
  if (!read(taker)) return false;
  if (position() >= size_) return true;
  const bool has_line = !read_block() && !block_.empty() && block_.size() <= kLongestLine;
  if (!has_line) {  // it came to have an end, or is too long for a line
    drop_block();
    return read(taker);
  }
  file_bytes_ = block_.size();
  block_ += '\n';
  verdicts_ = taker.judge(block_);
  return give_out(taker);
}

}  // namespace qzlog_tool
