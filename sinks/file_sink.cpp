#include "qzlog/file_sink.h"

#include <algorithm>
#include <new>
#include <string>

#include "foundation/allocate.h"
#include "foundation/thread_instance.h"
#include "lines/line_writer.h"
#include "sinks/file_sink_cores.h"
#include "sinks/held_lines.h"
#include "sinks/line_room.h"

using namespace qzlog;

qz_LOG_FileSink::qz_LOG_FileSink(const qz_LOG_FileSinkSettings& settings)
    : cores_(new_object<FileSinkCores>(settings, FileSinkCore::Lines::kNumbered)) {}

qz_LOG_FileSink::~qz_LOG_FileSink() { Close(cores_->settings().longest_wait_milliseconds); }

qz_LOG_Sink::Outcome qz_LOG_FileSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                 unsigned selector_index, unsigned long long& bytes) {
  if (cores_->is_closed()) return kFailed;
  FileSinkCore& core = cores_->get();
  try {
    bytes = with_thread_instance<LineRoom>([&](LineRoom& room) {
      std::string& text = room.begin(FileSinkCore::kRoomBefore);
      append_entry_body(entry, use_default, selector_index, text);
      return core.write(text, entry.GetLogLevel());
    });
  } catch (...) {
    bytes = 0;
  }
  if (bytes != 0) return kWritten;
  core.note_loss(entry.GetEntryID(), entry.GetLogLevel());
  return kFailed;
}

bool qz_LOG_FileSink::FlushEntries(unsigned milliseconds) { return cores_->get().flush(milliseconds); }

unsigned long long qz_LOG_FileSink::CloseEntries(unsigned milliseconds) {
  FileSinkCore::Left left;
  if (!cores_->close(milliseconds, left) || left.is_kept_for_next_open) return left.entries;
  for (unsigned level = 0; level < qz_LOG_SinkCounts::kLevels; ++level) {
    if (left.by_level[level] != 0) CountAsFailed(level, left.by_level[level], 0);
  }
  return left.entries;
}

bool qz_LOG_FileSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  if (count == 0) return true;
  if (cores_->is_closed()) return false;
  unsigned level = 0;
  for (const qz_LOG_HeldEntries* each = held; each != held + count; ++each) level = std::max(level, each->level);
  return with_thread_instance<LineRoom>([&](LineRoom& room) {
    std::string& text = room.begin(FileSinkCore::kRoomBefore);
    append_told_body(ToldOf::kHeld, rows_of(held, count), text);
    return cores_->get().write(text, level) != 0;
  });
}

bool qz_LOG_FileSink::Reopen() noexcept {
  try {
    return cores_->get().reopen();
  } catch (...) {
    return false;
  }
}

bool qz_LOG_FileSink::Rotate() noexcept {
  try {
    return cores_->get().rotate();
  } catch (...) {
    return false;
  }
}

qz_LOG_FileSinkStatus qz_LOG_FileSink::GetStatus() const {
  try {
    return cores_->get().status();
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}
