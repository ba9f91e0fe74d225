#include "sinks/pending_buffer.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include "foundation/fork_gate.h"

namespace qzlog {

using namespace pending_format;

namespace {

template <typename Word>
void publish(Word& word, Word value) {
  std::atomic_ref<Word>(word).store(value, std::memory_order_release);
}

std::size_t mapped_bytes(std::size_t half_bytes) { return kHeaderBytes + kHalves * half_bytes; }

}  // namespace

bool PendingBuffer::open_file(const std::string& path, std::string_view writer, std::size_t half_bytes,
                              mode_t permissions) {
  levels_.reset(new unsigned char[kHalves * (half_bytes / kShortestLine)]);
  const ForkDelay fork_delay;
  if (!create(path, permissions)) return false;
  const int error = posix_fallocate(file_.get(), 0, static_cast<off_t>(mapped_bytes(half_bytes)));
  errno = error;
  void* const memory = error != 0 ? MAP_FAILED
                                  : mmap(nullptr, mapped_bytes(half_bytes), PROT_READ | PROT_WRITE,
                                         MAP_SHARED | MAP_POPULATE, file_.get(), 0);
  if (memory == MAP_FAILED) {
    const int reason = errno;
    unlink(path.c_str());
    file_.reset();
    errno = reason;
    return false;
  }
  header_ = static_cast<Header*>(memory);
  header_->byte_order = kByteOrder;
  header_->half_bytes = static_cast<std::uint32_t>(half_bytes);
  std::memcpy(header_->writer, writer.data(), std::min(writer.size(), kWriterBytes - 1));
  std::memcpy(header_->magic, kMagic, sizeof kMagic);
  begin(static_cast<char*>(memory) + kHeaderBytes, half_bytes);
  return true;
}

/// Whoever looks for files of ended processes may take the file for one before it is locked, and delete it.
bool PendingBuffer::create(const std::string& path, mode_t permissions) {
  for (int attempt = 0; attempt < 10; ++attempt) {
    file_.reset(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, permissions));
    if (!file_) return false;
    struct stat status = {};
    if (flock(file_.get(), LOCK_EX | LOCK_NB) == 0 && fstat(file_.get(), &status) == 0 && status.st_nlink != 0) {
      path_ = path;
      return true;
    }
    if (errno == ENOLCK || errno == EOPNOTSUPP) {
      unlink(path.c_str());
      break;
    }
  }
  file_.reset();
  errno = ENOLCK;
  return false;
}

void PendingBuffer::open_memory(std::size_t half_bytes) {
  levels_.reset(new unsigned char[kHalves * (half_bytes / kShortestLine)]);
  memory_.reset(new char[kHalves * half_bytes]);
  begin(memory_.get(), half_bytes);
}

void PendingBuffer::begin(char* data, std::size_t half_bytes) {
  half_bytes_ = half_bytes;
  for (unsigned half = 0; half < kHalves; ++half) {
    halves_[half].data = data + half * half_bytes;
    halves_[half].levels = levels_.get() + half * (half_bytes / kShortestLine);
  }
}

void PendingBuffer::close() {
  if (header_ != nullptr) munmap(header_, mapped_bytes(half_bytes_));
  header_ = nullptr;
  file_.reset();
}

void PendingBuffer::remove_file() {
  if (file_) unlink(path_.c_str());
}

void PendingBuffer::commit(std::size_t bytes, std::uint64_t seq, unsigned level) {
  Half& half = halves_[active_];
  half.used += bytes;
  ++half.lines;
  half.last_seq = seq;
  half.levels[half.ever++] = static_cast<unsigned char>(level);
  set_committed(active_, half.used);
}

void PendingBuffer::set_committed(unsigned half, std::size_t bytes) {
  if (header_ != nullptr) publish(header_->committed[half], static_cast<std::uint32_t>(bytes));
}

void PendingBuffer::set_flushed(std::uint64_t seq) {
  flushed_seq_ = seq;
  if (header_ != nullptr) publish(header_->flushed_seq, seq);
}

bool PendingBuffer::seal() {
  if (has_sealed()) return false;
  active_ = 1 - active_;
  return true;
}

std::string_view PendingBuffer::sealed_lines() const {
  const Half& half = halves_[1 - active_];
  return {half.data + half.taken, half.used - half.taken};
}

void PendingBuffer::note(const FileIdentity& file, std::uint64_t end) {
  if (header_ == nullptr) return;
  const std::uint32_t taken = header_->notes_taken;
  header_->notes[taken % 2] = {file.device, file.inode, end};
  publish(header_->notes_taken, taken + 1);
}

bool PendingBuffer::take(std::size_t bytes) {
  Half& half = halves_[1 - active_];
  const std::string_view lines(half.data + half.taken, bytes);
  half.taken += bytes;
  if (half.taken < half.used) {
    const auto ends = static_cast<std::uint64_t>(std::count(lines.begin(), lines.end(), '\n'));
    half.lines -= ends;
    set_flushed(half.last_seq - half.lines);
    return false;
  }
  set_flushed(half.last_seq);
  set_committed(1 - active_, 0);
  half = {.data = half.data, .levels = half.levels};
  return true;
}

unsigned long long PendingBuffer::count_left(unsigned long long (&by_level)[qz_LOG_SinkCounts::kLevels],
                                             unsigned long long& bytes) const {
  unsigned long long entries = 0;
  for (const Half& half : halves_) {
    bytes += half.used - half.taken;
    for (std::size_t line = half.ever - static_cast<std::size_t>(half.lines); line < half.ever; ++line) {
      if (half.levels[line] >= qz_LOG_SinkCounts::kLevels) continue;
      ++by_level[half.levels[line]];
      ++entries;
    }
  }
  return entries;
}

}  // namespace qzlog
