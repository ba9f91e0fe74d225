#include "tools/ship/shipped_logs.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "tools/compiler/text/utf8_text.h"
#include "tools/logs/unreadable_input.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& text) { throw CommandError(kExitCannotRun, text); }

/// From the root and without links, as far as it is there: a state means the same series wherever the command starts.
std::string from_root(const std::string& folder) {
  std::error_code error;
  const fs::path path = fs::weakly_canonical(folder.empty() ? "." : folder, error);
  if (error) refuse("cannot find the folder '" + folder + "': " + error.message());
  std::string text = path.string();
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text;
}

std::string name_of(const LogSeries& series) { return path_in(series.folder, series.prefix); }

// States are JSON.
void refuse_odd_bytes(const std::string& path) {
  if (!qzlog_compiler::is_utf8(path)) refuse("'" + path + "': names that are not UTF-8 cannot be kept in a state");
}

LogSeries series_from(const std::string& operand) {
  const std::optional<LogSeries> series = series_of(operand);
  if (!series) refuse("'" + operand + "' is no series: write FOLDER/PREFIX, or a folder that is there");
  return {from_root(series->folder), series->prefix};
}

/// The identities of lines that name no writer have their files' paths.
void move_to(const std::string& name, const LogSeries& former, SeriesState& state) {
  const std::optional<LogSeries> now = series_of(name);
  for (FilePlace& place : state.places) {
    const std::string path = former.path_of(place.place) + '@';
    const std::size_t at = place.identity.find(path);
    if (now && at != std::string::npos) place.identity.replace(at, path.size(), now->path_of(place.place) + '@');
  }
  state.series = name;
}

}  // namespace

ShippedLogs::ShippedLogs(const std::vector<std::string>& operands) {
  for (const std::string& operand : operands) {
    refuse_odd_bytes(operand);
    struct stat status = {};
    const bool is_there = ::stat(operand.c_str(), &status) == 0;
    if (is_there && S_ISDIR(status.st_mode)) {
      folders_.push_back(from_root(operand));
    } else if (is_there) {
      refuse("'" + operand +
             "' is a file, and series are delivered: files PREFIX.YYYYMMDD.NNNN, as qz_LOG_FileSink writes them; name "
             "one by FOLDER/PREFIX");
    } else {
      add(series_from(operand));
    }
  }
}

void ShippedLogs::add(const LogSeries& series) {
  if (find(name_of(series)) == nullptr) series_.emplace_back(series, watch_);
}

ShippedSeries* ShippedLogs::find(const std::string& name) {
  const auto found = std::find_if(series_.begin(), series_.end(),
                                  [&](const ShippedSeries& own) { return name_of(own.series()) == name; });
  return found != series_.end() ? &*found : nullptr;
}

bool ShippedLogs::is_named(const std::string& name) const {
  return std::find(folders_.begin(), folders_.end(), folder_of(name)) != folders_.end();
}

void ShippedLogs::take_over(std::vector<SeriesState>& states) {
  for (SeriesState& state : states) {
    const std::optional<LogSeries> former = series_of(state.series);
    if (!former || find(state.series) != nullptr || is_named(state.series)) continue;
    const std::vector<std::string> names = names_with(former->prefix);
    if (names.size() == 1) move_to(names.front(), *former, state);
  }
}

std::vector<std::string> ShippedLogs::names_with(const std::string& prefix) const {
  std::vector<std::string> names;
  for (const ShippedSeries& own : series_) {
    if (own.series().prefix == prefix) names.push_back(name_of(own.series()));
  }
  for (const std::string& folder : folders_) names.push_back(path_in(folder, prefix));
  return names;
}

void ShippedLogs::begin_at(const std::vector<SeriesState>& states, const RecordIdentity& identities, LineTaker& taker) {
  for (const SeriesState& state : states) {
    const std::optional<LogSeries> series = series_of(state.series);
    if (series && is_named(state.series)) add(*series);
    ShippedSeries* const own = find(state.series);
    if (own == nullptr) {
      refuse(
          "the state is of the series '" + state.series +
          "', which is not named here: name it too; say --moved, if its folder is another one by now; or name another "
          "state with --state");
    }
    try {
      own->begin_at(state.places, identities, taker);
    } catch (const UnreadableInput& failure) {
      refuse(failure.what());
    }
  }
}

void ShippedLogs::look_into_folders(LineTaker& taker) {
  could_look_ = true;
  for (const std::string& folder : folders_) {
    watch_.watch_folder(folder);
    try {
      for (const LogSeries& series : logs_in(folder).series) {
        if (qzlog_compiler::is_utf8(series.prefix)) add(series);
      }
    } catch (const UnreadableInput& failure) {
      could_look_ = false;
      taker.complain(failure.what());
    }
  }
}

// The one that the taker had enough of goes on next time: only of one at a time lines are held. Who has always
// something to read never waits to be told of names.
bool ShippedLogs::read(LineTaker& taker) {
  if (Clock::now() >= next_look_) names_changed_ = true;
  if (names_changed_) look_into_folders(taker);
  for (std::size_t count = 0; count < series_.size(); ++count) {
    if (next_ == series_.end()) next_ = series_.begin();
    if (!next_->read(taker, names_changed_)) return false;
    ++next_;
  }
  if (names_changed_) next_look_ = Clock::now() + kLongestUnlooked;
  names_changed_ = false;
  return true;
}

std::vector<std::string> ShippedLogs::missing() {
  std::vector<std::string> texts;
  for (ShippedSeries& series : series_) {
    if (series.is_missing()) {
      texts.push_back("there is no file '" + name_of(series.series()) + ".YYYYMMDD.NNNN': nothing of it is delivered");
    }
  }
  for (const std::string& folder : folders_) {
    const bool has_series =
        std::any_of(series_.begin(), series_.end(), [&](ShippedSeries& own) { return own.series().folder == folder; });
    if (!has_series && could_look_) {
      texts.push_back("there is no series in the folder '" + folder +
                      "' (files PREFIX.YYYYMMDD.NNNN): nothing of it is delivered");
    }
  }
  return texts;
}

void ShippedLogs::wait() {
  if (watch_.wait().names) names_changed_ = true;
}

std::vector<SeriesState> ShippedLogs::places() {
  std::vector<SeriesState> states;
  for (ShippedSeries& series : series_) states.push_back({name_of(series.series()), series.places()});
  return states;
}

std::vector<ShipMetrics::Series> ShippedLogs::progress() {
  std::vector<ShipMetrics::Series> all;
  for (ShippedSeries& series : series_) {
    ShipMetrics::Series& own = all.emplace_back();
    own.series = name_of(series.series());
    for (const FilePlace& place : series.places()) {
      own.file = series.series().path_of(place.place);
      own.offset = place.offset;
    }
    try {
      own.waiting_bytes = series.waiting_bytes();
    } catch (const UnreadableInput&) {  // the folder cannot be read now, as reading it tells
      own.waiting_bytes = 0;
    }
  }
  return all;
}

}  // namespace qzlog_tool
