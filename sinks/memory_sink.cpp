#include "qzlog/memory_sink.h"

#include <utility>

#include "sinks/held_lines.h"
#include "sinks/line_forms.h"
#include "sinks/memory_store.h"
#include "sinks/setting_checks.h"

using namespace qzlog;

namespace {

const qz_LOG_MemorySinkSettings& checked(const qz_LOG_MemorySinkSettings& settings) {
  require_range("most_entries", settings.most_entries, 1, 1'000'000);
  require_range("most_bytes", settings.most_bytes, 1, 1ULL << 40);
  return settings;
}

}  // namespace

qz_LOG_MemorySink::qz_LOG_MemorySink(const qz_LOG_MemorySinkSettings& settings)
    : store_(with_memory([&] { return new Store(checked(settings)); })) {}

qz_LOG_MemorySink::~qz_LOG_MemorySink() = default;

qz_LOG_Sink::Outcome qz_LOG_MemorySink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                   unsigned selector_index, unsigned long long& bytes) {
  if (store_->is_closed()) return kFailed;
  std::unique_ptr<qz_LOG_MemoryRecord> record(new qz_LOG_MemoryRecord{entry, use_default, selector_index, {}});
  entry.AppendJson(record->line, use_default, selector_index);
  const std::size_t size = record->line.size();
  if (!store_->is_for(size)) return kDropped;
  if (!store_->add(std::move(record))) return kFailed;
  bytes = size;
  return kWritten;
}

bool qz_LOG_MemorySink::FlushEntries(unsigned /*milliseconds*/) { return true; }

unsigned long long qz_LOG_MemorySink::CloseEntries(unsigned /*milliseconds*/) {
  store_->close();
  return 0;
}

bool qz_LOG_MemorySink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  if (count == 0) return true;
  std::string line;
  JsonForm().append_told(ToldOf::kHeld, rows_of(held, count), line);
  line.pop_back();
  return store_->add_told(std::move(line));
}

std::vector<qz_LOG_MemoryRecord> qz_LOG_MemorySink::GetRecords() const {
  return with_memory([&] {
    std::vector<qz_LOG_MemoryRecord> records;
    store_->for_each([&](const MemoryLine& line) {
      if (line.record != nullptr) records.push_back(*line.record);
    });
    return records;
  });
}

std::vector<std::string> qz_LOG_MemorySink::GetLines() const {
  return with_memory([&] {
    std::vector<std::string> lines;
    store_->for_each([&](const MemoryLine& line) { lines.push_back(line.text()); });
    return lines;
  });
}

std::vector<std::string> qz_LOG_MemorySink::GetMessages() const {
  return with_memory([&] {
    std::vector<std::string> messages;
    for (const qz_LOG_MemoryRecord& record : GetRecords()) {
      messages.push_back(record.entry.FormatMessage(record.use_default, record.selector_index));
    }
    return messages;
  });
}

unsigned long long qz_LOG_MemorySink::GetForgotten() const noexcept { return store_->forgotten(); }

void qz_LOG_MemorySink::Clear() noexcept { store_->clear(); }
