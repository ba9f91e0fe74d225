#include "qzlog/syslog_sink.h"

#include "foundation/allocate.h"
#include "foundation/thread_instance.h"
#include "sinks/held_lines.h"
#include "sinks/setting_checks.h"
#include "sinks/syslog_cores.h"

using namespace qzlog;

/// Counts as failed what was taken and is lost.
class qz_LOG_SyslogSink::Failures final : public LostMessages {
 public:
  explicit Failures(qz_LOG_SyslogSink& sink) : sink_(sink) {}
  void message_lost(const SentMessage& message) noexcept override {
    sink_.CountAsFailed(message.level, 1, message.bytes);
  }

 private:
  qz_LOG_SyslogSink& sink_;
};

qz_LOG_SyslogSink::qz_LOG_SyslogSink(const qz_LOG_SyslogSinkSettings& settings)
    : failures_(new_object<Failures>(*this)),
      cores_(new_object<SyslogCores>(settings, *failures_)),
      render_failures_(0),
      closing_wait_(settings.longest_wait_milliseconds) {}

qz_LOG_SyslogSink::~qz_LOG_SyslogSink() { Close(closing_wait_); }

qz_LOG_Sink::Outcome qz_LOG_SyslogSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                   unsigned selector_index, unsigned long long& bytes) {
  if (cores_->is_closed()) return kFailed;
  SyslogCore& core = cores_->get();
  try {
    bytes = with_thread_instance<SyslogParts>([&](SyslogParts& parts) {
      const SyslogData data = cores_->settings().entries ? SyslogData::kEntry : SyslogData::kNone;
      make_syslog_parts(entry, {use_default, selector_index}, data, parts);
      if (!parts.is_rendered) render_failures_.fetch_add(1, std::memory_order_relaxed);
      return core.write(parts);
    });
  } catch (...) {
    core.note_loss(entry.GetEntryID(), entry.GetLogLevel());
    bytes = 0;
  }
  return bytes != 0 ? kWritten : kFailed;
}

bool qz_LOG_SyslogSink::FlushEntries(unsigned milliseconds) { return cores_->get().flush(milliseconds); }

unsigned long long qz_LOG_SyslogSink::CloseEntries(unsigned milliseconds) { return cores_->close(milliseconds); }

bool qz_LOG_SyslogSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  if (count == 0) return true;
  return !cores_->is_closed() && cores_->get().tell_held(rows_of(held, count));
}

qz_LOG_SyslogSinkStatus qz_LOG_SyslogSink::GetStatus() const {
  return with_memory([this] { return cores_->get().status(); });
}

unsigned long long qz_LOG_SyslogSink::GetRenderFailures() const noexcept {
  return render_failures_.load(std::memory_order_relaxed);
}
