#include "tools/merge/merged_logs.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "tools/system/command_error.h"

namespace qzlog_tool {

MergedLogs::MergedLogs(std::vector<InputFiles> inputs, MergeReading reading) : reading_(std::move(reading)) {
  if (inputs.size() > kMostLogs) {
    throw CommandError(kExitCannotRun, "--merge-by-time takes " + std::to_string(kMostLogs) +
                                           " logs at most, a series as one: these are " +
                                           std::to_string(inputs.size()));
  }
  for (InputFiles& files : inputs) logs_.push_back(std::make_unique<MergedLog>(std::move(files), reading_));
}

bool MergedLogs::Next(qz_LOG_EntryLine& line) {
  while (find_turn()) {
    if (logs_[current_]->read(line)) return true;
  }
  return false;
}

// The log whose line was read last goes on only now: what it says of its next lines comes behind that line.
bool MergedLogs::find_turn() {
  if (!has_begun_) {
    begin();
  } else if (current_ < logs_.size() && find_next()) {
    const Turn own = {logs_[current_]->moment(), current_};
    if (waiting_.empty() || own < waiting_.front()) return true;
    wait(own);
  }
  current_ = logs_.size();
  if (waiting_.empty()) return false;
  std::pop_heap(waiting_.begin(), waiting_.end(), std::greater<>());
  current_ = waiting_.back().log;
  waiting_.pop_back();
  return true;
}

void MergedLogs::begin() {
  has_begun_ = true;
  for (current_ = 0; current_ < logs_.size(); ++current_) {
    if (find_next()) wait({logs_[current_]->moment(), current_});
  }
}

void MergedLogs::wait(Turn turn) {
  waiting_.push_back(turn);
  std::push_heap(waiting_.begin(), waiting_.end(), std::greater<>());
}

/// In the current log. One that has ended is given up.
bool MergedLogs::find_next() {
  std::unique_ptr<MergedLog>& log = logs_[current_];
  if (log->find_next()) return true;
  all_read_ = all_read_ && !log->has_failed();
  refused_ += log->refused_count();
  log.reset();
  return false;
}

}  // namespace qzlog_tool
