#include "tools/render/followed_log.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/logs/unreadable_input.h"
#include "tools/report/passed_over.h"
#include "tools/system/stop_signals.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Severity;

/// For opening one more file.
struct NoRoom : UnreadableInput {
  using UnreadableInput::UnreadableInput;
};

FileIdentity identity_of(const struct stat& status) {
  return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

}  // namespace

FollowedLog::File::File(FileDescriptor descriptor, const std::string& file_path, SeriesPlace at,
                        EntryRendering& rendering)
    : bytes(std::move(descriptor), file_path),
      path(file_path),
      place(at),
      reader(qz_LOG_EntryReader::FromSource(bytes, path.c_str(), &rendering)) {}

FollowedLog::FollowedLog(LogName name, EntryRendering& rendering, ChangeWatch& watch)
    : name_(std::move(name)), rendering_(rendering), watch_(watch) {}

FollowedLog::~FollowedLog() {
  for (const OpenFile& file : files_) watch_.forget_file(file->watch);
}

void FollowedLog::read(bool names_changed) {
  if (names_changed) watch_names();
  read_files();
  if (!names_changed) return;
  while (StopSignals::requested() == 0 && open_next()) read_files();
  close_quiet_files();
}

// Before it is looked for names, so that none comes up unseen.
void FollowedLog::watch_names() {
  if (!name_.path.empty()) watch_.watch_folder(folder_of(name_.path));
  if (name_.series) watch_.watch_folder(name_.series->folder);
}

void FollowedLog::read_files() {
  for (const OpenFile& file : files_) read_file(*file);
}

// Where reading fails, it is tried again at the next look.
void FollowedLog::read_file(File& file) {
  try {
    if (!file.bytes.look()) {
      rendering_.reporter().report(Severity::kWarning,
                                   "'" + file.path + "' became shorter: it is read from its beginning");
      file.bytes.begin_again();
      file.reader = qz_LOG_EntryReader::FromSource(file.bytes, file.path.c_str(), &rendering_);
      file.bytes.look();
    }
    if (file.bytes.has_lines()) rendering_.render(file.reader);
  } catch (const NothingYet&) {
    file.latest_growth = Clock::now();
  } catch (const UnreadableInput& failure) {
    tell(failure.what(), file.told_failure);
  }
}

/// Goes over to the file that comes next, if there is one.
bool FollowedLog::open_next() {
  std::string failure;
  OpenFile next = find_next(failure);
  tell(failure, told_failure_);
  if (next == nullptr) return false;
  // The former file may have got its last lines after it was read, but before the next one was begun.
  if (!files_.empty()) read_file(*files_.back());
  if (name_.series) tell_deleted(next->place);
  latest_ = next->place;
  files_.push_back(std::move(next));
  while (files_.size() > kMostFiles) close_first();
  return true;
}

FollowedLog::OpenFile FollowedLog::find_next(std::string& failure) {
  try {
    if (!name_.path.empty()) {
      OpenFile file = find_by_path();
      // What was a file stays one, and what was a series stays that.
      if (file != nullptr) name_.series.reset();
      if (file != nullptr || !name_.series) return file;
    }
    OpenFile file = find_in_series(failure);
    if (file != nullptr) name_.path.clear();
    return file;
  } catch (const UnreadableInput& reason) {
    failure = reason.what();
    return nullptr;
  }
}

FollowedLog::OpenFile FollowedLog::find_by_path() {
  return is_open_already(name_.path) ? nullptr : open(name_.path, {});
}

bool FollowedLog::is_open_already(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && is_open_already(identity_of(status));
}

bool FollowedLog::is_open_already(const FileIdentity& identity) {
  const auto found = std::find_if(files_.begin(), files_.end(),
                                  [&](const OpenFile& file) { return file->bytes.identity() == identity; });
  if (found == files_.end()) return false;
  std::rotate(found, found + 1, files_.end());  // a former file may have its name back
  return true;
}

// One that cannot be opened is left out when the next one can. Only where there is no room, it is waited for.
FollowedLog::OpenFile FollowedLog::find_in_series(std::string& failure) {
  const LogSeries& series = *name_.series;
  if (later_.empty()) {
    later_ = series_files(series);
    std::erase_if(later_, [this](SeriesPlace place) { return place < latest_; });
    std::reverse(later_.begin(), later_.end());
  }
  OpenFile file;
  while (file == nullptr && !later_.empty()) {
    const SeriesPlace place = later_.back();
    const std::string path = series.path_of(place);
    try {
      if (place != latest_ || !is_open_already(path)) file = open(path, place);
    } catch (const NoRoom&) {
      throw;
    } catch (const UnreadableInput& reason) {
      failure = reason.what();
      latest_ = place;
    }
    later_.pop_back();
  }
  return file;
}

/// Null where there is no such file, or where it is open. Throws UnreadableInput for one that cannot be opened.
FollowedLog::OpenFile FollowedLog::open(const std::string& path, SeriesPlace place) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return nullptr;
  FileDescriptor descriptor(open_path(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (descriptor.get() < 0) {
    const int error = errno;
    if (error == ENOENT || error == ENOTDIR) return nullptr;
    const std::string text = "cannot open '" + path + "': " + std::strerror(error);
    if (error == EMFILE || error == ENFILE || error == ENOMEM) throw NoRoom(text);
    throw UnreadableInput(text);
  }
  auto file = std::make_unique<File>(std::move(descriptor), path, place, rendering_);
  if (is_open_already(file->bytes.identity())) return nullptr;
  file->watch = watch_.watch_file(file->bytes.descriptor());
  return file;
}

/// Files are begun one by one: of those of one day none is left out.
void FollowedLog::tell_deleted(SeriesPlace found) const {
  if (found.day != latest_.day || found.number <= latest_.number + 1) return;
  const unsigned count = found.number - latest_.number - 1;
  passed_over().add_several("file", "deleted", name_.series->path_of(latest_), count);
  rendering_.reporter().report(Severity::kWarning,
                               (count == 1 ? "a file" : std::to_string(count) + " files") + " between '" +
                                   name_.series->path_of(latest_) + "' and '" + name_.series->path_of(found) +
                                   (count == 1 ? "' was" : "' were") + " deleted before being read");
}

void FollowedLog::close_quiet_files() {
  while (files_.size() > 1 && is_quiet(*files_[0]) && !files_[1]->bytes.is_empty()) close_first();
  if (files_.size() == 1 && files_[0]->bytes.is_deleted() && is_quiet(*files_[0])) close_first();
}

bool FollowedLog::is_quiet(const File& file) const { return Clock::now() - file.latest_growth >= kLinger; }

void FollowedLog::close_first() {
  const OpenFile file = std::move(files_.front());
  files_.pop_front();
  watch_.forget_file(file->watch);
  try {
    file->bytes.finish();
    rendering_.render(file->reader);
  } catch (const NothingYet&) {  // it was asked to end meanwhile
  } catch (const UnreadableInput& failure) {
    tell(failure.what(), file->told_failure);
  }
}

/// Once, and not at each look.
void FollowedLog::tell(const std::string& failure, std::string& told) const {
  if (failure == told) return;
  told = failure;
  if (!failure.empty()) rendering_.reporter().report(Severity::kError, failure);
}

}  // namespace qzlog_tool
