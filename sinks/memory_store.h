#ifndef QZLOG_SINKS_MEMORY_STORE_H
#define QZLOG_SINKS_MEMORY_STORE_H

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <utility>

#include "foundation/locks.h"
#include "qzlog/memory_sink.h"

namespace qzlog {

/// A line that a memory sink keeps, of an entry or telling of entries.
struct MemoryLine {
  const std::string& text() const {
    if (record != nullptr) return record->line;
    return told;
  }

  std::unique_ptr<qz_LOG_MemoryRecord> record;  ///< null for a line that tells
  std::string told;
};

}  // namespace qzlog

/// The latest lines, as many as there is room for. Any thread.
class qz_LOG_MemorySink::Store {
 public:
  explicit Store(const qz_LOG_MemorySinkSettings& settings) : settings_(settings) {}

  bool is_closed() const { return is_closed_.load(std::memory_order_relaxed); }
  void close() { is_closed_.store(true, std::memory_order_relaxed); }

  /// Whether there can be room for so many bytes.
  bool is_for(std::size_t bytes) const { return bytes <= settings_.most_bytes; }

  /// False when the store is closed. std::bad_alloc; everything is as it was then.
  bool add(std::unique_ptr<qz_LOG_MemoryRecord> record) { return add(qzlog::MemoryLine{std::move(record), {}}); }
  bool add_told(std::string told) { return add(qzlog::MemoryLine{nullptr, std::move(told)}); }

  template <typename Visit>
  void for_each(Visit visit) const {
    const qzlog::MutexSentry hold(mutex_);
    for (const qzlog::MemoryLine& line : lines_) visit(line);
  }
  unsigned long long forgotten() const {
    const qzlog::MutexSentry hold(mutex_);
    return forgotten_;
  }
  void clear() {
    std::deque<qzlog::MemoryLine> cleared;
    const qzlog::MutexSentry hold(mutex_);
    lines_.swap(cleared);
    bytes_ = 0;
  }

 private:
  bool add(qzlog::MemoryLine line) {
    const std::size_t size = line.text().size();
    const qzlog::MutexSentry hold(mutex_);
    if (is_closed()) return false;
    lines_.push_back(std::move(line));
    bytes_ += size;
    while (lines_.size() > settings_.most_entries || bytes_ > settings_.most_bytes) forget_oldest();
    return true;
  }
  void forget_oldest() {
    bytes_ -= lines_.front().text().size();
    lines_.pop_front();
    ++forgotten_;
  }

  const qz_LOG_MemorySinkSettings settings_;
  std::atomic<bool> is_closed_{false};
  mutable qzlog::Mutex mutex_;  // guards what follows
  std::deque<qzlog::MemoryLine> lines_;
  unsigned long long bytes_ = 0;
  unsigned long long forgotten_ = 0;
};

#endif  // QZLOG_SINKS_MEMORY_STORE_H
