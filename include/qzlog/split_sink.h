#ifndef QZLOG_SPLIT_SINK_H
#define QZLOG_SPLIT_SINK_H

#include <cstddef>
#include <memory>
#include <vector>

#include "qzlog/export.h"
#include "qzlog/sink.h"

/// Hands each entry on to several sinks, one after the other. None keeps another from its entry.
///
///   std::vector<std::unique_ptr<qz_LOG_Sink>> sinks;
///   sinks.emplace_back(new qz_LOG_FileSink(file));
///   sinks.emplace_back(new qz_LOG_StreamSink(STDERR_FILENO, false));
///   qz_LOG_SplitSink sink(std::move(sinks));
///   sink.Write(entry);
///
/// An entry is written when each sink that did not hold it back on purpose wrote it, and one did; it has failed when it
/// failed in one, and is held back when all held it back. `bytes` of the counts is 0: the inner sinks have it.
class QZLOG_EXPORT qz_LOG_SplitSink : public qz_LOG_Sink {
 public:
  /// Throws QZX_logging_illegal_argument "sinks: there is none" or "sinks: one is null", and QZX_memory_alloc.
  explicit qz_LOG_SplitSink(std::vector<std::unique_ptr<qz_LOG_Sink>> sinks);
  ~qz_LOG_SplitSink() override;

  std::size_t GetSinkCount() const noexcept { return sinks_.size(); }
  /// `index` is below GetSinkCount().
  qz_LOG_Sink& GetSink(std::size_t index) const noexcept { return *sinks_[index]; }

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  /// Waits so long for all together, but asks each.
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  const std::vector<std::unique_ptr<qz_LOG_Sink>> sinks_;
};

#endif  // QZLOG_SPLIT_SINK_H
