#include "tools/render/followed_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/logs/unreadable_input.h"
#include "tools/system/stop_signals.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kBlock = std::size_t{64} << 10;
/// Of a line that has grown to this without an end, only what is new is searched for one.
constexpr std::uint64_t kLongLine = std::uint64_t{1} << 20;

}  // namespace

FollowedFile::FollowedFile(FileDescriptor file, std::string shown_path)
    : file_(std::move(file)), shown_path_(std::move(shown_path)) {
  ask_status();
}

void FollowedFile::ask_status() {
  struct stat status = {};
  if (::fstat(file_.get(), &status) != 0) {
    throw UnreadableInput("cannot read '" + shown_path_ + "': " + std::strerror(errno));
  }
  identity_ = {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
  size_ = static_cast<std::uint64_t>(status.st_size);
  is_deleted_ = status.st_nlink == 0;
}

bool FollowedFile::look() {
  ask_status();
  if (size_ < position_) return false;
  limit_ = end_of_lines();
  return true;
}

void FollowedFile::begin_again() noexcept { position_ = limit_ = searched_ = 0; }

void FollowedFile::finish() {
  ask_status();
  limit_ = std::max(size_, position_);
  is_finished_ = true;
}

/// Behind the last line feed; the position where there is none behind it.
std::uint64_t FollowedFile::end_of_lines() {
  if (size_ < searched_ || size_ - position_ < kLongLine) searched_ = position_;
  const std::uint64_t begin = std::max(searched_, position_);
  char block[kBlock];
  for (std::uint64_t end = size_; end > begin;) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, end - begin));
    const std::size_t count = read_at(end - wanted, block, wanted);
    const auto* const line_feed = static_cast<const char*>(::memrchr(block, '\n', count));
    if (line_feed != nullptr) return end - wanted + static_cast<std::uint64_t>(line_feed - block) + 1;
    end -= wanted;
  }
  searched_ = size_;
  return position_;
}

std::size_t FollowedFile::read_at(std::uint64_t offset, char* buffer, std::size_t size) const {
  for (;;) {
    const ssize_t count = ::pread(file_.get(), buffer, size, static_cast<off_t>(offset));
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) throw UnreadableInput("cannot read '" + shown_path_ + "': " + std::strerror(errno));
  }
}

// A file that was cut since the last look gives less: the next look sees it.
std::size_t FollowedFile::Read(char* buffer, std::size_t size) {
  if (StopSignals::requested() != 0) throw NothingYet();
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, limit_ - position_));
  const std::size_t count = wanted > 0 ? read_at(position_, buffer, wanted) : 0;
  position_ += count;
  if (count == 0 && !is_finished_) throw NothingYet();
  return count;
}

}  // namespace qzlog_tool
