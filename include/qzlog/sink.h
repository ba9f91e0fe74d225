#ifndef QZLOG_SINK_H
#define QZLOG_SINK_H

#include <atomic>
#include <memory>

#include "qzlog/export.h"
#include "qzlog/logentry.h"

/// What became of the entries that a sink was given. Each counts once: given = written + failed + dropped, exactly,
/// whenever no call of Write is under way.
struct qz_LOG_SinkCounts {
  enum : unsigned { kLevels = 10 };
  unsigned long long written;  ///< in the sink's keeping: as safe as its settings make it
  unsigned long long failed;   ///< something did not work
  unsigned long long dropped;  ///< held back on purpose: not wanted, filtered, over a limit
  unsigned long long bytes;    ///< of what was written
  unsigned long long written_by_level[kLevels];
  unsigned long long failed_by_level[kLevels];
  unsigned long long dropped_by_level[kLevels];
};

/// So many entries of one event that a sink held back, because they were too many.
struct qz_LOG_HeldEntries {
  unsigned id;
  unsigned level;  ///< the highest of theirs
  unsigned count;
  long long since_seconds;     ///< when the first of them came: seconds since 1970-01-01 00:00:00 GMT
  unsigned since_nanoseconds;  ///< of that second
};

/// Where entries go. Every function may be called by any thread at any time before the destructor begins.
///
///   if (sink.Wants(7, 1)) {
///     qz_LOG_LogEntry entry(1001, 7);
///     entry.AddAttribStr("Name", "vol1");
///     sink.Write(entry);
///   }
///
/// For a sink of one's own derive a class and implement WriteEntry, FlushEntries and CloseEntries. One that hands
/// entries on to another sink owns that sink, counts for itself what it was given, and uses HandOn:
///
///   Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
///                      unsigned long long&) override {
///     return is_night() ? HandOn(*inner_, entry, use_default, selector_index) : kDropped;
///   }
class QZLOG_EXPORT qz_LOG_Sink {
 public:
  enum : unsigned { kEveryMask = ~0U };

  /// Derived classes close what is open: when this runs, what they implement is gone.
  virtual ~qz_LOG_Sink();
  qz_LOG_Sink(const qz_LOG_Sink&) = delete;
  qz_LOG_Sink& operator=(const qz_LOG_Sink&) = delete;

  /// Whether Write would take an entry of this level and property mask: to be asked before one is built.
  bool Wants(unsigned level, unsigned mask) const noexcept {
    const unsigned bits = wanted_mask_.load(std::memory_order_relaxed);
    return level >= lowest_level_.load(std::memory_order_relaxed) && (bits == kEveryMask || (mask & bits) != 0);
  }
  /// From now on entries below this level, or with none of these bits, are not wanted; kEveryMask asks for no bit.
  /// At first everything is wanted.
  void SetWanted(unsigned lowest_level, unsigned mask) noexcept;

  /// Hands the entry over, with the message that its reader is to see (see qz_LOG_LogEntry::FormatMessage). False when
  /// it was not taken: it is counted as failed, or as dropped where that is meant. The entry is not needed afterwards.
  bool Write(const qz_LOG_LogEntry& entry, bool use_default = false, unsigned selector_index = 0) noexcept;

  /// Whether all that Write took before has gone on to where it is kept, which is waited for so long.
  bool Flush(unsigned milliseconds) noexcept;

  /// Ends the sink: Write fails from now on. Waits so long for what Write has taken to be kept; returns how many
  /// entries are left that are not. Called again it returns what is left then.
  unsigned long long Close(unsigned milliseconds) noexcept;

  /// Sums over all threads. An entry that is just being written may be in none of them.
  qz_LOG_SinkCounts GetCounts() const noexcept;

 protected:
  enum Outcome { kWritten, kFailed, kDropped };

  /// Everything is wanted. Throws QZX_memory_alloc.
  qz_LOG_Sink();

  /// What becomes of an entry that is wanted; `bytes` is 0 and becomes what was written of it. What it throws counts as
  /// kFailed.
  virtual Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                             unsigned long long& bytes) = 0;
  /// Flush and Close. What they throw counts as false, and as one entry left.
  virtual bool FlushEntries(unsigned milliseconds) = 0;
  virtual unsigned long long CloseEntries(unsigned milliseconds) = 0;

  /// Writes a line that tells of entries that a sink in front of this one held back; with a count of 0 nothing. False
  /// when that did not work, and always for a sink that has no such lines: where this is not implemented.
  virtual bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count);

  /// What a sink that hands on does with the one that it owns: Write, which tells apart why an entry was not taken, and
  /// TellHeld.
  static Outcome HandOn(qz_LOG_Sink& sink, const qz_LOG_LogEntry& entry, bool use_default,
                        unsigned selector_index) noexcept;
  static bool HandOnHeld(qz_LOG_Sink& sink, const qz_LOG_HeldEntries* held, unsigned long count) {
    return sink.TellHeld(held, count);
  }

  /// Takes back that so many entries of a level, of so many bytes, were written: they failed later.
  void CountAsFailed(unsigned level, unsigned long long entries, unsigned long long bytes) noexcept;

 private:
  class QZLOG_NO_EXPORT Counters;

  std::atomic<unsigned> lowest_level_;
  std::atomic<unsigned> wanted_mask_;
  const std::unique_ptr<Counters> counters_;
};

#endif  // QZLOG_SINK_H
