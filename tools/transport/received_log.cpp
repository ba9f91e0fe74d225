#include "tools/transport/received_log.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/report/command_message.h"
#include "tools/system/command_error.h"
#include "tools/system/stop_signals.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Severity;

/// A receiver that gives nothing for so long, while records are held, waits for them to be settled.
constexpr std::chrono::seconds kStall{5};

qzlog_start start_of(const OriginOptions& options, const std::string& group, const ReaderClock& clock, bool follow) {
  std::optional<qzlog_start> start = parse_start(options.start, clock);
  if (!start) throw CommandError(kExitCannotRun, std::string("--start: write ") + kStartForms);
  start->group = group.empty() ? nullptr : group.c_str();
  start->follow = follow ? 1 : 0;
  return *start;
}

/// What other definitions may be right for.
bool is_of_definitions(const char* rule) {
  constexpr std::string_view kRules[] = {"unknown-id", "unknown-name", "unknown-attribute", "bad-definition-file",
                                         "out-of-memory"};
  return std::find(std::begin(kRules), std::end(kRules), rule) != std::end(kRules);
}

bool is_output_gone() {
  pollfd output = {STDOUT_FILENO, 0, 0};
  return ::poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

const TransportPlugin& require_reading(const TransportPlugin& plugin, const TransportUrl& url) {
  if (plugin.can_read()) return plugin;
  throw CommandError(kExitCannotRun, "--from: " + url.scheme() +
                                         ":// can be delivered to and not read from: read from where it keeps what it "
                                         "gets");
}

}  // namespace

ReceivedLog::ReceivedLog(const OriginOptions& options, const TransportUrl& url, const ReaderClock& clock, bool follow)
    : url_(url),
      plugin_(url, options.receiver.plugin_folder()),
      options_(transport_options(options.receiver, "qzlog")),
      settings_(url, options_),
      host_([this](const std::string& text) { print_command_message(Severity::kWarning, url_.text() + ": " + text); },
            [] { return StopSignals::requested() != 0; }),
      group_(options.group),
      start_(start_of(options, group_, clock, follow)),
      reader_(require_reading(plugin_, url), settings_, host_, start_),
      feed_({.from = url.text(), .back_off = {}},
            {.reader = reader_,
             .warn = [](const std::string& text) { print_command_message(Severity::kWarning, text); },
             .is_ending = [] { return StopSignals::requested() != 0; }}) {}

void ReceivedLog::UnknownEntries::TakeLineError(const qz_LOG_LineError& error) {
  if (is_of_definitions(error.rule)) log_.leave_current();
  reader_.TakeLineError(error);
}

ReceivedLog::End ReceivedLog::read(const Reading& reading) {
  std::signal(SIGPIPE, SIG_IGN);  // of a connection that breaks
  const StopSignals signals;
  UnknownEntries handler(reading.logs.handler, *this);
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(source_, url_.text().c_str(), &handler);
  latest_ = Clock::now();
  while (!reading.logs.is_complete() && read_next(reader, reading)) {
    end_.signal = StopSignals::requested();
    end_.output_gone = is_output_gone();
    if (end_.signal != 0 || end_.output_gone) break;
  }
  end_.signal = StopSignals::requested();
  if (!end_.output_gone) let_out(reading, Pause::kEnd);
  tell_of_unknown();
  return end_;
}

bool ReceivedLog::read_next(qz_LOG_EntryReader& reader, const Reading& reading) {
  switch (feed_.next()) {
    case ReceivedFeed::State::kRecords:
      return read_records(reader, reading);
    case ReceivedFeed::State::kNothing:
      return wait_on(reading);
    case ReceivedFeed::State::kEnd:
      break;
  }
  return false;
}

// Where no more is wanted, the records behind the last line are for others.
bool ReceivedLog::read_records(qz_LOG_EntryReader& reader, const Reading& reading) {
  const std::span<const qzlog_received> records = feed_.records();
  source_.give(records);
  try {
    reading.logs.read(reader);
  } catch (const ReceivedSource::NoMore&) {
  }
  if (start_.group != nullptr) hold_read();
  let_out(reading, Pause::kMore);
  latest_ = Clock::now();
  return held_.size() < reading.most_held;
}

void ReceivedLog::leave_current() {
  if (start_.group == nullptr) return;
  unknown_.push_back(source_.current().token);
  ++unknown_count_;
}

void ReceivedLog::hold_read() {
  auto unknown = unknown_.begin();
  for (const qzlog_received& record : feed_.records().first(source_.given())) {
    if (unknown != unknown_.end() && *unknown == record.token) {
      ++unknown;
    } else {
      held_.push_back(record.token);
    }
  }
  unknown_.clear();
}

void ReceivedLog::tell_of_unknown() const {
  if (unknown_count_ == 0) return;
  print_command_message(Severity::kWarning,
                        url_.text() +
                            ": entries that the definitions here do not know, or for which there was no "
                            "memory, stay for others of the group '" +
                            group_ + "': " + std::to_string(unknown_count_));
}

bool ReceivedLog::wait_on(const Reading& reading) {
  let_out(reading, Pause::kNothing);
  const bool may_wait_for_itself = !held_.empty() || unknown_count_ != 0;
  if (!may_wait_for_itself || start_.follow != 0 || Clock::now() - latest_ < kStall) return true;
  print_command_message(Severity::kWarning,
                        url_.text() + ": gives no more entries to the group for now: start again for others");
  return false;
}

void ReceivedLog::let_out(const Reading& reading, Pause pause) {
  if (reading.let_out(pause)) settle();
}

void ReceivedLog::settle() {
  feed_.settle(held_);
  held_.clear();
}

}  // namespace qzlog_tool
