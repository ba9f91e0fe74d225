#include "tools/ship/shipped_series.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/logs/unreadable_input.h"
#include "tools/report/passed_over.h"
#include "tools/ship/file_check.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

std::uint64_t size_of(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

[[noreturn]] void refuse_other_file(const std::string& path, const FilePlace& place) {
  throw CommandError(kExitCannotRun,
                     "'" + path + "' is not the file that the state is of: it has no line " + place.identity +
                         " that ends at byte " + std::to_string(place.offset) +
                         ". If the log was replaced, remove the state, or name another one with --state: everything "
                         "that is there is then delivered, what the receiver has already a second time");
}

}  // namespace

ShippedSeries::ShippedSeries(LogSeries series, ChangeWatch& watch) : series_(std::move(series)), watch_(watch) {}

ShippedSeries::~ShippedSeries() {
  for (const Watched& file : files_) watch_.forget_file(file.watch);
}

void ShippedSeries::begin_at(const std::vector<FilePlace>& places, const RecordIdentity& identities, LineTaker& taker) {
  for (const FilePlace& place : places) {
    latest_ = place.place;
    OpenFile file = open(place.offset, place.place);
    const std::string path = series_.path_of(place.place);
    if (file == nullptr) {
      taker.miss("'" + path + "' is gone; it was delivered up to byte " + std::to_string(place.offset) +
                 ", and what was behind that is not known");
      continue;
    }
    file->progress()->identity = place.identity;
    if (identity_before(file->descriptor(), path, place.offset, identities) != place.identity) {
      refuse_other_file(path, place);
    }
    add(std::move(file));
  }
}

bool ShippedSeries::read(LineTaker& taker, bool names_changed) {
  names_changed_ = names_changed_ || names_changed;
  if (names_changed_) watch_.watch_folder(series_.folder);  // before it is looked for names, so that none is unseen
  if (!read_files(taker)) return false;
  if (!names_changed_) return true;
  for (Next next = open_next(taker); next != Next::kNone; next = open_next(taker)) {
    if (next == Next::kEnough || !read_files(taker)) return false;
  }
  names_changed_ = false;
  return close_quiet_files(taker);
}

bool ShippedSeries::read_files(LineTaker& taker) {
  for (const Watched& file : files_) {
    try {
      if (!file.file->read(taker)) return false;
    } catch (const UnreadableInput& failure) {
      taker.complain(failure.what());
    }
  }
  return true;
}

/// Goes over to the file that comes next, if there is one.
ShippedSeries::Next ShippedSeries::open_next(LineTaker& taker) {
  try {
    look_for_later();
    while (!later_.empty()) {
      if (files_.size() >= kMostFiles && !close_first(taker)) return Next::kEnough;
      const SeriesPlace place = later_.back();
      OpenFile file = open(0, place);
      later_.pop_back();
      if (file == nullptr) continue;  // it was deleted before its turn, which the numbers tell
      tell_missing(place, taker);
      latest_ = place;
      add(std::move(file));
      return Next::kOpened;
    }
  } catch (const UnreadableInput& failure) {
    taker.complain(failure.what());
  }
  return Next::kNone;
}

void ShippedSeries::look_for_later() {
  if (!later_.empty()) return;
  later_ = series_files(series_);
  has_looked_ = true;
  std::erase_if(later_, [this](SeriesPlace place) { return place <= latest_; });
  std::reverse(later_.begin(), later_.end());
}

/// Null where there is no such file.
ShippedSeries::OpenFile ShippedSeries::open(std::uint64_t settled, SeriesPlace place) {
  const std::string path = series_.path_of(place);
  struct stat status = {};
  if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return nullptr;
  FileDescriptor descriptor(open_path(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (descriptor.get() < 0) {
    const int error = errno;
    if (error == ENOENT || error == ENOTDIR) return nullptr;
    throw UnreadableInput("cannot open '" + path + "': " + std::strerror(error) +
                          (error == EACCES ? ": let the user who ships read it, by a group for example" : ""));
  }
  auto progress = std::make_shared<FileProgress>();
  progress->series = &series_;
  progress->place = place;
  progress->path = path;
  progress->settled = settled;
  return std::make_unique<ShippedFile>(std::move(descriptor), std::move(progress));
}

void ShippedSeries::add(OpenFile file) {
  progresses_.push_back(file->progress());
  const int watch = watch_.watch_file(file->descriptor());
  files_.push_back({std::move(file), watch});
}

/// Files are begun one by one: of those of one day none is left out.
void ShippedSeries::tell_missing(SeriesPlace found, LineTaker& taker) const {
  if (latest_.day == 0 || found.day != latest_.day || found.number <= latest_.number + 1) return;
  const unsigned count = found.number - latest_.number - 1;
  passed_over().add_several("file", "deleted", series_.path_of(latest_), count);
  taker.miss("'" + series_.path_of(found) + "' is the next file after '" + series_.path_of(latest_) + "': " +
             std::to_string(count) + (count == 1 ? " file was" : " files were") + " deleted before being delivered");
}

// A former file is done with when the next one has lines: those who write have gone over to it. One that was deleted
// takes room on the disk as long as it is open.
bool ShippedSeries::close_quiet_files(LineTaker& taker) {
  try {
    while (files_.size() > 1 && is_quiet(*files_[0].file) && !files_[1].file->is_empty()) {
      if (!close_first(taker)) return false;
    }
    const bool is_left = files_.size() == 1 && files_[0].file->is_deleted() && is_quiet(*files_[0].file);
    return !is_left || close_first(taker);
  } catch (const UnreadableInput& failure) {
    taker.complain(failure.what());
  }
  return true;
}

bool ShippedSeries::is_quiet(const ShippedFile& file) {
  return ShippedFile::Clock::now() - file.latest_growth() >= kLinger;
}

/// False when the taker has enough. Throws UnreadableInput: the file then stays.
bool ShippedSeries::close_first(LineTaker& taker) {
  ShippedFile& file = *files_.front().file;
  if (!file.read_rest(taker)) return false;
  file.close_at_end();
  watch_.forget_file(files_.front().watch);
  files_.pop_front();
  return true;
}

// The last one stays, whatever it has: it tells where the series goes on.
std::vector<FilePlace> ShippedSeries::places() {
  while (progresses_.size() > 1 && progresses_.front()->is_done()) progresses_.pop_front();
  std::vector<FilePlace> places;
  for (const std::shared_ptr<FileProgress>& progress : progresses_) {
    if (progress->is_done() && progress != progresses_.back()) continue;
    places.push_back({progress->place, progress->settled, progress->identity});
  }
  return places;
}

std::uint64_t ShippedSeries::waiting_bytes() const {
  std::uint64_t bytes = 0;
  SeriesPlace last;
  for (const std::shared_ptr<FileProgress>& progress : progresses_) {
    const std::uint64_t size = size_of(progress->path);
    bytes += size > progress->settled ? size - progress->settled : 0;
    last = progress->place;
  }
  for (const SeriesPlace place : series_files(series_)) {
    if (place > last) bytes += size_of(series_.path_of(place));
  }
  return bytes;
}

}  // namespace qzlog_tool
