#include "sinks/file_sink_core.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "foundation/allocate.h"
#include "sinks/pending_recovery.h"
#include "sinks/silent_thread.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

constinit std::atomic<unsigned long long> latest_start{0};

/// Nanoseconds since 1970, later for each writer of the process.
unsigned long long new_start() {
  const std::timespec now = SinkClock::now();
  unsigned long long start =
      static_cast<unsigned long long>(now.tv_sec) * 1'000'000'000 + static_cast<unsigned long long>(now.tv_nsec);
  unsigned long long latest = latest_start.load();
  do {
    if (start <= latest) start = latest + 1;
  } while (!latest_start.compare_exchange_weak(latest, start));
  return start;
}

std::string host_name() {
  char name[65] = {};
  if (gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "localhost";
  for (char* character = name; *character != '\0'; ++character) {
    const bool is_plain = (*character >= 'a' && *character <= 'z') || (*character >= 'A' && *character <= 'Z') ||
                          (*character >= '0' && *character <= '9') || std::strchr("-._", *character) != nullptr;
    if (!is_plain) *character = '_';
  }
  return name;
}

std::string new_writer() { return host_name() + '/' + std::to_string(getpid()) + '/' + std::to_string(new_start()); }

unsigned long long start_of(const std::string& writer) { return std::stoull(writer.substr(writer.rfind('/') + 1)); }

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
      writer_(new_writer()),
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
  const std::string path = pending_path(destination_, getpid(), start_of(writer_));
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
