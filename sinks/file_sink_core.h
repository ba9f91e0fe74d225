#ifndef QZLOG_SINKS_FILE_SINK_CORE_H
#define QZLOG_SINKS_FILE_SINK_CORE_H

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "foundation/cache_line.h"
#include "lines/line_envelope.h"
#include "qzlog/file_sink.h"
#include "sinks/fork_registry.h"
#include "sinks/log_destination.h"
#include "sinks/loss_table.h"
#include "sinks/pending_buffer.h"
#include "sinks/wake_place.h"

namespace qzlog {

/// What of a file sink is one writer: its number of lines, its buffer, its open files and its thread. A process that
/// fork makes leaves the one of its parent alone and gets another.
///
/// Two locks, taken in this order: `flushing_` for the files, `putting_` for the buffer and the number of the last
/// line. Nobody writes to a file with `putting_` held, but for a line that is longer than the buffer.
class FileSinkCore final : public ForkRegistry::Member {
 public:
  enum class Lines {
    kNumbered,  ///< JSON, with a head that tells writer and number
    kPlain      ///< of any kind, without a head; never kShared
  };
  struct Left {
    unsigned long long by_level[qz_LOG_SinkCounts::kLevels] = {};
    unsigned long long entries = 0;
    unsigned long long bytes = 0;
    bool is_kept_for_next_open = false;
  };

  /// What a line needs before its body, for its head.
  static constexpr std::size_t kRoomBefore = LineEnvelope::kMaxHead;

  /// Opens the file. With `must_open` throws QZX_logging_file_operation_failed when that does not work; without, it is
  /// tried again with the first line. QZX_memory_alloc, std::bad_alloc.
  static std::shared_ptr<FileSinkCore> open(const qz_LOG_FileSinkSettings& settings, Lines lines, bool must_open);
  FileSinkCore(const qz_LOG_FileSinkSettings& settings, Lines lines);
  ~FileSinkCore();

  /// `text` has kRoomBefore bytes and behind them the body of a line, and gets a line end. Returns the bytes of the
  /// line, 0 when it was not taken.
  std::size_t write(std::string& text, unsigned level);
  /// An entry was not taken.
  void note_loss(unsigned id, unsigned level) noexcept;

  bool flush(unsigned milliseconds);
  /// What is left afterwards.
  Left close(unsigned milliseconds);

  bool reopen();
  bool rotate();
  qz_LOG_FileSinkStatus status() const;

 private:
  enum class Put { kDone, kFull, kTooLong, kClosed };

  void abandon() noexcept override;
  void end() noexcept override;

  // How it begins: file_sink_core.cpp.
  void open_files(bool must_open);
  void open_buffer(const std::shared_ptr<FileSinkCore>& self);
  bool open_pending_file();
  bool start_thread(const std::shared_ptr<FileSinkCore>& self);

  // Entries come: file_sink_write.cpp.
  std::size_t write_through(std::string& text, unsigned level);
  std::size_t write_buffered(std::string& text, unsigned level);
  std::size_t write_past_buffer(std::string& text, unsigned level);
  bool wait_for_room(std::uint32_t ticket, long long& deadline);
  void wait_until_synced(std::uint64_t seq);
  Put put(std::string_view body, unsigned level, std::size_t& bytes, std::uint64_t& seq);
  void put_at(char* place, std::string_view body, unsigned level, std::size_t& bytes);
  std::size_t append_line(const SeriesHold& hold, std::string& text);
  char* write_head(char* place, const std::timespec& now) noexcept;
  char* write_head_before(char* body, const std::timespec& now) noexcept;

  // Lines go: file_sink_flush.cpp.
  static void* run_thread(void* self);
  void run();
  enum class Work { kFlush, kWait, kNothing };
  Work look_for_work(long long oldest, long long& wait);
  bool flush_sealed();
  bool flush_sealed_with_files(bool holds_putting);
  void flush_rest();
  bool seal_rest();
  void sync_if_asked();
  void settle(bool worked);
  void tell_losses();
  void tell_losses_through(const SeriesHold& hold);
  void finish();
  Left count_left() const;

  const qz_LOG_FileSinkSettings settings_;
  const Lines lines_;
  const std::string writer_;
  qz_LOG_FileSinkSettings::Way way_;
  LossTable losses_;
  std::atomic<bool> working_{true};
  unsigned long long recovered_ = 0;
  unsigned long long damaged_ = 0;

  alignas(kCacheLine) mutable std::mutex putting_;
  LineEnvelope envelope_;
  PendingBuffer buffer_;
  std::uint64_t seq_ = 0;
  bool is_idle_ = false;  // the thread waits for a line

  alignas(kCacheLine) mutable std::mutex flushing_;
  LogDestination destination_;

  WakePlace work_;   // for the thread: there is something to do
  WakePlace space_;  // for those who write and flush: something was done
  std::atomic<bool> flush_asked_{false};
  std::atomic<bool> stop_asked_{false};
  std::atomic<long long> stop_by_{0};
  std::atomic<std::uint64_t> sync_asked_{0};  // lines up to this number are to be on the disk
  std::atomic<std::uint64_t> flushed_{0};
  std::atomic<std::uint64_t> synced_{0};
  std::atomic<unsigned long long> syncs_given_up_{0};
  std::atomic<bool> is_closed_{false};  // set with putting_ held, at the latest before the files are closed
  std::atomic<bool> is_done_{false};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_FILE_SINK_CORE_H
