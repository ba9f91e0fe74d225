#ifndef QZLOG_MEMORY_SINK_H
#define QZLOG_MEMORY_SINK_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "qzlog/export.h"
#include "qzlog/logentry.h"
#include "qzlog/sink.h"

/// What a qz_LOG_MemorySink is made with.
struct qz_LOG_MemorySinkSettings {
  unsigned most_entries = 1024;             ///< kept at once: at least 1
  unsigned long long most_bytes = 1 << 20;  ///< of their lines together: at least 1
};

/// An entry that a qz_LOG_MemorySink keeps.
struct qz_LOG_MemoryRecord {
  qz_LOG_LogEntry entry;  ///< a copy
  bool use_default;
  unsigned selector_index;
  std::string line;  ///< see qz_LOG_LogEntry::ToJson
};

/// Entries in the memory of the process, to be looked at: for tests, and for what is worth knowing only when something
/// has gone wrong.
///
///   qz_LOG_MemorySink sink;
///   store.Use(sink);
///   EXPECT_EQ(sink.GetMessages(), std::vector<std::string>({"Disk vol1 is full"}));
///
/// It keeps the latest: where there is no more room the oldest make it. They stay counted as written, and
/// GetForgotten() says how many they are. An entry whose line alone is longer than most_bytes is held back.
class QZLOG_EXPORT qz_LOG_MemorySink : public qz_LOG_Sink {
 public:
  /// Throws QZX_logging_illegal_argument, naming the setting ("most_entries: 0 is not from 1 to 1000000"), and
  /// QZX_memory_alloc.
  explicit qz_LOG_MemorySink(const qz_LOG_MemorySinkSettings& settings = qz_LOG_MemorySinkSettings());
  ~qz_LOG_MemorySink() override;

  /// What is kept, the oldest first. Lines that tell of entries which a qz_LOG_LimitedSink held back are among the
  /// lines; they have no record and no message. Any thread; what is returned is the caller's. Throw QZX_memory_alloc,
  /// and GetMessages what qz_LOG_LogEntry::FormatMessage throws.
  std::vector<qz_LOG_MemoryRecord> GetRecords() const;
  std::vector<std::string> GetLines() const;
  std::vector<std::string> GetMessages() const;
  /// How many entries, or lines that tell of them, made room for others.
  unsigned long long GetForgotten() const noexcept;
  /// Keeps nothing of what it has; the counts stay.
  void Clear() noexcept;

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  class QZLOG_NO_EXPORT Store;
  const std::unique_ptr<Store> store_;
};

#endif  // QZLOG_MEMORY_SINK_H
