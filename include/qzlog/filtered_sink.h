#ifndef QZLOG_FILTERED_SINK_H
#define QZLOG_FILTERED_SINK_H

#include <memory>

#include "qzlog/entry_filt.h"
#include "qzlog/export.h"
#include "qzlog/sink.h"

/// Hands on the entries that a filter lets pass.
///
///   _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 5, 9, "console", false, false};
///   qz_LOG_FilteredSink sink(std::unique_ptr<qz_LOG_Sink>(new qz_LOG_StreamSink(STDERR_FILENO, false)), filter);
///   sink.Write(entry);
///
/// The filter is asked for each entry, so that what the configuration source says for its section counts from then on.
/// Its callback may be called by several threads at once. What it throws counts the entry as failed. What does not pass
/// is held back. `bytes` of the counts is 0: the inner sink has it.
class QZLOG_EXPORT qz_LOG_FilteredSink : public qz_LOG_Sink {
 public:
  /// Copies the filter and the text of its section; `user_data` has to live as long as the sink. Throws
  /// QZX_logging_illegal_argument "sink: it is null" and QZX_memory_alloc.
  qz_LOG_FilteredSink(std::unique_ptr<qz_LOG_Sink> sink, const _qz_LOG_entry_filter& filter);
  ~qz_LOG_FilteredSink() override;

  qz_LOG_Sink& GetSink() const noexcept { return *sink_; }

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  const std::unique_ptr<qz_LOG_Sink> sink_;
  _qz_LOG_entry_filter filter_;
  std::unique_ptr<char[]> section_;
};

#endif  // QZLOG_FILTERED_SINK_H
