#ifndef QZLOG_LIMITED_SINK_H
#define QZLOG_LIMITED_SINK_H

#include <memory>

#include "qzlog/export.h"
#include "qzlog/sink.h"

/// What a qz_LOG_LimitedSink is made with.
struct qz_LOG_LimitedSinkSettings {
  enum : unsigned { kNever = 10 };

  unsigned entries_per_second = 10;   ///< of each event, at least 1
  unsigned unlimited_level = kNever;  ///< entries of this level and above are handed on whatever their number

  /// 0, or the ID of the entry by which the inner sink is told of what was held back. It has the attributes HeldId
  /// (TypeUInt4), HeldLevel (TypeUInt1), HeldCount (TypeUInt4) and HeldSince (TypeTimestamp). Without it a line with
  /// the member "held", or in text, tells of them, where the inner sink is one of the library's.
  unsigned held_event_id = 0;
};

/// Hands on at most so many entries of each event in each second of the clock, and tells how many it held back.
///
///   qz_LOG_LimitedSinkSettings settings;
///   settings.entries_per_second = 100;
///   qz_LOG_LimitedSink sink(std::unique_ptr<qz_LOG_Sink>(new qz_LOG_FileSink(file)), settings);
///   sink.Write(entry);
///
/// What was held back is told, by event, when the second is over: with the next entry of any event, at the latest by
/// Flush, Close or the destructor: {"held":[{"id":1001,"level":3,"count":990,"since":"2026-11-21T08:15:30.25Z"}]},
/// where `level` is the highest of theirs and `since` the time of the first. An entry that tells of them has that level
/// too, and is not limited.
///
/// The sink knows 1024 events at a time; in a second that has more, entries of further ones may be handed on without a
/// limit. `bytes` of the counts is 0: the inner sink has it.
class QZLOG_EXPORT qz_LOG_LimitedSink : public qz_LOG_Sink {
 public:
  /// Throws QZX_logging_illegal_argument, naming the setting ("entries_per_second: 0 is not from 1 to 1000000000",
  /// "held_event_id: the inner sink can be told by an entry only", "sink: it is null"), and QZX_memory_alloc.
  explicit qz_LOG_LimitedSink(std::unique_ptr<qz_LOG_Sink> sink,
                              const qz_LOG_LimitedSinkSettings& settings = qz_LOG_LimitedSinkSettings());
  /// Tells the inner sink what was held back.
  ~qz_LOG_LimitedSink() override;

  qz_LOG_Sink& GetSink() const noexcept { return *sink_; }

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  QZLOG_NO_EXPORT void TellAllHeld(bool everything) noexcept;
  QZLOG_NO_EXPORT bool TellRows(bool everything);

  class QZLOG_NO_EXPORT Limits;
  const std::unique_ptr<qz_LOG_Sink> sink_;
  const qz_LOG_LimitedSinkSettings settings_;
  const std::unique_ptr<Limits> limits_;
};

#endif  // QZLOG_LIMITED_SINK_H
