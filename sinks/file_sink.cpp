#include "qzlog/file_sink.h"

#include <atomic>
#include <new>
#include <string>
#include <utility>

#include "foundation/allocate.h"
#include "foundation/locks.h"
#include "foundation/thread_instance.h"
#include "lines/line_writer.h"
#include "sinks/file_sink_core.h"
#include "sinks/file_sink_settings.h"

using namespace qzlog;

namespace {

/// The line that a thread is making; its memory is used again.
struct LineRoom {
  static constexpr std::size_t kMostKept = 64U << 10;

  std::string& begin() {
    if (text.capacity() > kMostKept) std::string().swap(text);
    text.resize(FileSinkCore::kRoomBefore);
    return text;
  }

  std::string text;
};

}  // namespace

/// The writer of this process: another one after a fork.
class qz_LOG_FileSink::Cores {
 public:
  explicit Cores(const qz_LOG_FileSinkSettings& settings)
      : settings_(settings), owner_(FileSinkCore::open(settings_, true)), current_(owner_.get()) {}
  ~Cores() {
    if (owner_->is_abandoned()) leave_to_parent();
  }

  const qz_LOG_FileSinkSettings& settings() const { return settings_; }
  FileSinkCore* current() const { return current_.load(std::memory_order_acquire); }
  bool is_closed() const { return is_closed_.load(std::memory_order_relaxed); }
  void close() { is_closed_.store(true, std::memory_order_relaxed); }

  /// Opening looks for other processes' files and takes locks of its own; no other thread of the process waits here for
  /// long, since it wants the same.
  FileSinkCore* renew() {
    const MutexSentry hold(mutex_);
    if (!owner_->is_abandoned()) return current();
    std::shared_ptr<FileSinkCore> renewed = FileSinkCore::open(settings_, false);
    leave_to_parent();
    owner_ = std::move(renewed);
    current_.store(owner_.get(), std::memory_order_release);
    return owner_.get();
  }

 private:
  /// Other threads were using it when the process forked, so it may be in any state: nothing of it is destroyed.
  void leave_to_parent() {
    auto* const left = new (std::nothrow) std::shared_ptr<FileSinkCore>(owner_);
    static_cast<void>(left);
  }

  const qz_LOG_FileSinkSettings settings_;
  Mutex mutex_;
  std::shared_ptr<FileSinkCore> owner_;
  std::atomic<FileSinkCore*> current_;
  std::atomic<bool> is_closed_{false};
};

qz_LOG_FileSink::qz_LOG_FileSink(const qz_LOG_FileSinkSettings& settings)
    : cores_([&] {
        try {
          check_settings(settings);
          return new Cores(settings);
        } catch (const std::bad_alloc&) {
          throw QZX_memory_alloc();
        }
      }()) {}

qz_LOG_FileSink::~qz_LOG_FileSink() { Close(cores_->settings().longest_wait_milliseconds); }

FileSinkCore* qz_LOG_FileSink::core() const {
  FileSinkCore* const current = cores_->current();
  if (current->is_abandoned()) [[unlikely]]
    return cores_->renew();
  return current;
}

qz_LOG_Sink::Outcome qz_LOG_FileSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                 unsigned selector_index, unsigned long long& bytes) {
  if (cores_->is_closed()) return kFailed;
  FileSinkCore* const core = this->core();
  try {
    bytes = with_thread_instance<LineRoom>([&](LineRoom& room) {
      std::string& text = room.begin();
      append_entry_body(entry, use_default, selector_index, text);
      return core->write(text, entry.GetLogLevel());
    });
  } catch (...) {
    bytes = 0;
  }
  if (bytes != 0) return kWritten;
  core->note_loss(entry.GetEntryID(), entry.GetLogLevel());
  return kFailed;
}

bool qz_LOG_FileSink::FlushEntries(unsigned milliseconds) { return core()->flush(milliseconds); }

unsigned long long qz_LOG_FileSink::CloseEntries(unsigned milliseconds) {
  FileSinkCore* const core = cores_->current();
  const bool is_first = !cores_->is_closed();
  cores_->close();
  if (core->is_abandoned()) return 0;  // what waits is the parent's, and this process has written nothing
  const FileSinkCore::Left left = core->close(milliseconds);
  if (!is_first || core->is_kept_for_next_open()) return left.entries;
  for (unsigned level = 0; level < qz_LOG_SinkCounts::kLevels; ++level) {
    if (left.by_level[level] != 0) CountAsFailed(level, left.by_level[level], 0);
  }
  return left.entries;
}

bool qz_LOG_FileSink::Reopen() noexcept {
  try {
    return core()->reopen();
  } catch (...) {
    return false;
  }
}

bool qz_LOG_FileSink::Rotate() noexcept {
  try {
    return core()->rotate();
  } catch (...) {
    return false;
  }
}

qz_LOG_FileSinkStatus qz_LOG_FileSink::GetStatus() const {
  try {
    return core()->status();
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}
