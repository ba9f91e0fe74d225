#include "tools/render/log_follower.h"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "tools/logs/log_inputs.h"
#include "tools/logs/unreadable_input.h"
#include "tools/render/log_reading.h"
#include "tools/system/stop_signals.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Severity;

enum class Kind { kLog, kFolder, kStream };

/// What is not there yet is going to be a log.
Kind kind_of(const std::string& path) {
  struct stat status = {};
  if (path == "-") return Kind::kStream;
  if (::stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return Kind::kLog;
  return S_ISDIR(status.st_mode) ? Kind::kFolder : Kind::kStream;
}

}  // namespace

LogFollower::LogFollower(EntryRendering& rendering) : rendering_(rendering), watch_(STDOUT_FILENO) {}

LogFollower::End LogFollower::follow(const std::vector<std::string>& operands) {
  for (const std::string& operand : operands) {
    if (kind_of(operand) == Kind::kStream) {
      // One that nothing comes from is waited for, and a signal ends the command then.
      end_.all_read = read_input(operand, false, rendering_) && end_.all_read;
      continue;
    }
    const StopSignals signals;
    begin(operand);
    if (must_end()) return end_;
  }
  if (folders_.empty() && operands_.empty()) return end_;
  const StopSignals signals;
  while (!must_end()) {
    rendering_.catch_up();
    const ChangeWatch::Change change = watch_.wait();
    end_.output_gone = change.output_gone;
    if (!must_end()) read_all(change.names);
  }
  return end_;
}

bool LogFollower::must_end() {
  end_.signal = StopSignals::requested();
  return end_.output_gone || end_.signal != 0 || rendering_.is_complete();
}

void LogFollower::begin(const std::string& operand) {
  if (kind_of(operand) == Kind::kFolder) {
    watch_.watch_folder(operand);
    look_into(folders_.emplace_back(Folder{operand, ""}));
  } else {
    begin_log(operand);
  }
}

void LogFollower::begin_log(const std::string& path) {
  FollowedLog& log = operands_.emplace_back(LogName{path, series_of(path)}, rendering_, watch_);
  log.read(true);
  if (log.is_absent() && !log.has_failed())
    rendering_.reporter().report(Severity::kWarning, "'" + path + "' is not there yet: waiting for it");
}

void LogFollower::look_into(Folder& folder) {
  watch_.watch_folder(folder.path);
  FolderLogs logs;
  std::string complaint;
  try {
    logs = logs_in(folder.path);
  } catch (const UnreadableInput& failure) {
    complaint = failure.what();
  }
  if (!complaint.empty() && folder.complaint != complaint) rendering_.reporter().report(Severity::kError, complaint);
  folder.complaint = complaint;
  for (const LogSeries& series : logs.series) {
    add("series " + path_in(series.folder, series.prefix), {"", series});
  }
  for (const std::string& file : logs.files) add("file " + file, {file, std::nullopt});
}

void LogFollower::add(const std::string& key, const LogName& name) {
  const auto [at, is_new] = found_.try_emplace(key, name, rendering_, watch_);
  if (is_new) at->second.read(true);
}

// Logs of a folder that are gone are forgotten: one of the same name would be another one.
void LogFollower::read_all(bool names_changed) {
  for (FollowedLog& log : operands_) log.read(names_changed);
  for (auto& [key, log] : found_) log.read(names_changed);
  if (!names_changed) return;
  std::erase_if(found_, [](const auto& found) { return found.second.is_absent() && !found.second.has_failed(); });
  for (Folder& folder : folders_) look_into(folder);
}

}  // namespace qzlog_tool
