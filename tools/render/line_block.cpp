#include "tools/render/line_block.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace qzlog_tool {

namespace {

/// As the reader of entries has it: longer lines are errors, and their bytes are not shown.
constexpr std::size_t kLongestLine = std::size_t{16} << 20;
constexpr std::size_t kByteOrderMark = 3;
/// Of a longer line, as many bytes as tell the reader so.
constexpr std::size_t kMostOfLine = kByteOrderMark + kLongestLine + 1;
constexpr std::size_t kMostRoom = kMostOfLine + LineBlock::kUsualBytes;

/// The end of the first lines of a text, as many as a block has, and their number.
struct CountedLines {
  std::size_t end = 0;
  std::uint64_t count = 0;
};

CountedLines count_lines(std::string_view text) {
  CountedLines lines;
  while (lines.end < text.size() && lines.count < LineBlock::kMostLines) {
    lines.end = std::min(text.find('\n', lines.end), text.size() - 1) + 1;
    ++lines.count;
  }
  return lines;
}

}  // namespace

LineBlockCutter::LineBlockCutter(LogInput& input, std::function<void()> before_wait)
    : input_(input),
      before_wait_(std::move(before_wait)),
      file_(std::make_shared<const std::string>(input.shown_path())) {}

bool LineBlockCutter::fill(LineBlock& block) {
  begin(block);
  while (!is_done(block)) {
    if (block.size >= lines_begin_ + kMostOfLine && lines_end_ == lines_begin_) {
      skip_long_line(block);
    } else {
      read_more(block);
    }
  }
  finish(block, at_end_ ? block.size : lines_end_);
  if (failure_ && block.lines == 0) std::rethrow_exception(failure_);
  return block.lines > 0;
}

void LineBlockCutter::begin(LineBlock& block) {
  block.file = file_;
  block.lines_before = lines_ > 0 ? lines_ - 1 : 0;
  lines_begin_ = lines_ > 0 ? 1 : 0;
  block.room.resize(std::max({block.room.size(), LineBlock::kUsualBytes, lines_begin_ + rest_.size()}));
  block.room[0] = '\n';
  std::copy(rest_.begin(), rest_.end(), block.room.begin() + static_cast<std::ptrdiff_t>(lines_begin_));
  block.size = lines_begin_ + rest_.size();
  rest_.clear();
  lines_end_ = lines_begin_;
  find_line_end(block, lines_begin_);
}

bool LineBlockCutter::is_done(const LineBlock& block) const {
  if (at_end_ || failure_) return true;
  return lines_end_ > lines_begin_ && (block.size >= LineBlock::kUsualBytes || input_.would_wait());
}

// What stands before the place that cannot be read is read all the same.
void LineBlockCutter::read_more(LineBlock& block) try {
  if (input_.would_wait()) before_wait_();
  if (block.size == block.room.size()) block.room.resize(std::min(2 * block.size, kMostRoom));
  const std::size_t count = input_.Read(block.room.data() + block.size, block.room.size() - block.size);
  at_end_ = count == 0;
  block.size += count;
  find_line_end(block, block.size - count);
} catch (const UnreadableInput&) {
  failure_ = std::current_exception();
}

void LineBlockCutter::skip_long_line(LineBlock& block) {
  const std::size_t kept = lines_begin_ + kMostOfLine;
  while (!at_end_ && !failure_ && lines_end_ == lines_begin_) {
    block.size = kept;
    read_more(block);
  }
  if (lines_end_ == lines_begin_) return;
  const std::size_t end = block.bytes().find('\n', kept);
  rest_ = block.bytes().substr(end + 1);
  block.room[kept] = '\n';
  block.size = kept + 1;
  lines_end_ = block.size;
}

/// Looks at the bytes from `from` on.
void LineBlockCutter::find_line_end(const LineBlock& block, std::size_t from) {
  const std::size_t last = block.bytes().substr(from).rfind('\n');
  if (last != std::string_view::npos) lines_end_ = from + last + 1;
}

void LineBlockCutter::finish(LineBlock& block, std::size_t end) {
  const CountedLines lines = count_lines(block.bytes().substr(lines_begin_, end - lines_begin_));
  const std::size_t cut = lines_begin_ + lines.end;
  if (rest_.empty()) rest_ = block.bytes().substr(cut);
  block.size = cut;
  block.lines = lines.count;
  lines_ += block.lines;
}

}  // namespace qzlog_tool
