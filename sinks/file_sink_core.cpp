#include "sinks/file_sink_core.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "foundation/allocate.h"
#include "sinks/pending_recovery.h"
#include "sinks/silent_thread.h"
#include "sinks/sink_clock.h"
#include "sinks/writer_name.h"

namespace qzlog {

namespace {

[[noreturn]] void throw_open_failure(const std::string& path, int error) {
  if (error == ENOMEM) throw QZX_memory_alloc();
  char reason[128];
  const std::string text = "The log file " + path + " cannot be opened: " + strerror_r(error, reason, sizeof reason);
  throw QZX_logging_file_operation_failed(text.c_str(), 0);
}

}  // namespace

FileSinkCore::FileSinkCore(const qz_LOG_FileSinkSettings& settings, Lines lines)
    : settings_(settings),
      lines_(lines),
      writer_(new_writer_name()),
      way_(settings.way),
      envelope_(writer_),
      destination_(settings_) {}

FileSinkCore::~FileSinkCore() { ForkRegistry::remove(*this); }

std::shared_ptr<FileSinkCore> FileSinkCore::open(const qz_LOG_FileSinkSettings& settings, Lines lines, bool must_open) {
  auto core = std::make_shared<FileSinkCore>(settings, lines);
  ForkRegistry::add(*core);
  core->open_files(must_open);
  core->open_buffer(core);
  return core;
}

void FileSinkCore::open_files(bool must_open) {
  destination_.open_lock();
  const RecoveredLines recovered = recover_pending(destination_);
  recovered_ = recovered.lines;
  damaged_ = recovered.damaged_bytes;
  const SeriesHold hold(destination_.lock());
  errno = 0;
  if (destination_.prepare(hold, SinkClock::now(), 0)) return;
  working_ = false;
  if (must_open) throw_open_failure(destination_.file().path(), errno);
}

/// A thread is needed, and for kShared a file: what is left without them is to write each entry, which is as safe.
void FileSinkCore::open_buffer(const std::shared_ptr<FileSinkCore>& self) {
  using Settings = qz_LOG_FileSinkSettings;
  if (way_ == Settings::kWrite) return;
  const bool takes_lines_later = !destination_.file().is_open() || destination_.file().is_regular();
  if (way_ == Settings::kShared && !(takes_lines_later && open_pending_file())) {
    way_ = Settings::kWrite;
    return;
  }
  if (way_ == Settings::kBuffered) buffer_.open_memory(settings_.buffer_bytes / pending_format::kHalves);
  if (start_thread(self)) return;
  buffer_.remove_file();
  buffer_.close();
  way_ = Settings::kWrite;
}

bool FileSinkCore::open_pending_file() {
  const std::string path = pending_path(destination_, getpid(), writer_start(writer_));
  const std::size_t half_bytes = settings_.buffer_bytes / pending_format::kHalves;
  return buffer_.open_file(path, writer_, half_bytes, settings_.file_permissions);
}

bool FileSinkCore::start_thread(const std::shared_ptr<FileSinkCore>& self) {
  auto argument = std::make_unique<std::shared_ptr<FileSinkCore>>(self);
  if (!start_silent_thread(run_thread, argument.get())) return false;
  static_cast<void>(argument.release());  // run_thread has it
  return true;
}

void FileSinkCore::abandon() noexcept {
  destination_.abandon();
  buffer_.close();
}

/// What waits in memory would be lost; what waits in the file need not wait for the next open.
void FileSinkCore::end() noexcept {
  constexpr unsigned kLongestMilliseconds = 1000;
  if (!stop_asked_.load()) flush(kLongestMilliseconds);
}

void FileSinkCore::note_loss(unsigned id, unsigned level) noexcept { losses_.add(id, level, SinkClock::now()); }

bool FileSinkCore::reopen() {
  const std::lock_guard flushing(flushing_);
  if (is_closed_) return false;
  const SeriesHold hold(destination_.lock());
  return destination_.reopen(hold, SinkClock::now());
}

bool FileSinkCore::rotate() {
  const std::lock_guard flushing(flushing_);
  if (is_closed_) return false;
  const SeriesHold hold(destination_.lock());
  return destination_.rotate(hold, SinkClock::now());
}

qz_LOG_FileSinkStatus FileSinkCore::status() const {
  const std::lock_guard flushing(flushing_);
  const LogDestination::Counts& counts = destination_.counts();
  return {destination_.file().path(),
          way_,
          working_.load(),
          counts.numbers_exhausted.load(),
          counts.rotations,
          counts.reopened,
          counts.truncations,
          recovered_,
          damaged_ + counts.damaged,
          counts.fragments,
          destination_.sync_failures() + syncs_given_up_.load()};
}

}  // namespace qzlog
