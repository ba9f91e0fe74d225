#include "qzlog/filtered_sink.h"

#include <cstring>
#include <utility>

#include "foundation/allocate.h"
#include "sinks/setting_checks.h"

using namespace qzlog;

qz_LOG_FilteredSink::qz_LOG_FilteredSink(std::unique_ptr<qz_LOG_Sink> sink, const _qz_LOG_entry_filter& filter)
    : sink_(std::move(sink)), filter_(filter) {
  if (sink_ == nullptr) with_memory([] { refuse_setting("sink", "it is null"); });
  if (filter.section == nullptr) return;
  const std::size_t size = std::strlen(filter.section) + 1;
  section_.reset(new_array<char>(size));
  std::memcpy(section_.get(), filter.section, size);
  filter_.section = section_.get();
}

qz_LOG_FilteredSink::~qz_LOG_FilteredSink() = default;

qz_LOG_Sink::Outcome qz_LOG_FilteredSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                     unsigned selector_index, unsigned long long& /*bytes*/) {
  const _qz_LOG_entry_filter filter = filter_;  // check_entry writes to it
  return filter.check_entry(entry) ? HandOn(*sink_, entry, use_default, selector_index) : kDropped;
}

bool qz_LOG_FilteredSink::FlushEntries(unsigned milliseconds) { return sink_->Flush(milliseconds); }

unsigned long long qz_LOG_FilteredSink::CloseEntries(unsigned milliseconds) { return sink_->Close(milliseconds); }

bool qz_LOG_FilteredSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  return HandOnHeld(*sink_, held, count);
}
