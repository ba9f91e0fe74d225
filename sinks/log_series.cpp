#include "sinks/log_series.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "foundation/descriptor.h"
#include "foundation/fork_gate.h"
#include "qzlog/log_util.h"

namespace qzlog {

namespace {

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

unsigned day_number(const std::tm& fields) {
  return static_cast<unsigned>((fields.tm_year + 1900) * 10000 + (fields.tm_mon + 1) * 100 + fields.tm_mday);
}

/// The beginning of the day so many days later, on the local clock.
std::time_t beginning_of_day(const std::tm& fields, int later) {
  std::tm day = {};
  day.tm_year = fields.tm_year;
  day.tm_mon = fields.tm_mon;
  day.tm_mday = fields.tm_mday + later;
  day.tm_isdst = -1;
  return mktime(&day);
}

std::tm local_fields(std::time_t moment) {
  std::tm fields = {};
  localtime_r(&moment, &fields);
  return fields;
}

unsigned earliest_day_kept(unsigned keep_days, std::time_t now) {
  const ForkDelay fork_delay;
  const std::tm today = local_fields(now);
  return day_number(local_fields(beginning_of_day(today, 1 - static_cast<int>(keep_days))));
}

}  // namespace

std::string LogSeries::path_of(SeriesFile file) const {
  const auto field = [](unsigned value) { return static_cast<unsigned short>(value); };
  const std::unique_ptr<char[]> name(make_text_log_filename(prefix_.c_str(), field(file.day / 10000),
                                                            field(file.day / 100 % 100), field(file.day % 100),
                                                            field(file.number), folder_.c_str()));
  return name.get();
}

bool LogSeries::list(std::vector<SeriesFile>& files) const {
  const ForkDelay fork_delay;
  const std::unique_ptr<DIR, FolderCloser> folder(opendir(folder_.c_str()));
  if (folder == nullptr) return errno == EACCES;
  errno = 0;
  while (const dirent* const entry = readdir(folder.get())) {
    unsigned short year = 0;
    unsigned short month = 0;
    unsigned short day = 0;
    unsigned short number = 0;
    if (is_a_valid_text_log(entry->d_name, prefix_.c_str(), &year, &month, &day, &number) == 0 || number == 0) continue;
    files.push_back({year * 10000U + month * 100U + day, number});
  }
  if (errno != 0) return false;
  std::sort(files.begin(), files.end());
  return true;
}

bool LogSeries::find_latest(SeriesFile& latest) const {
  std::vector<SeriesFile> files;
  if (!list(files)) return false;
  if (!files.empty()) latest = files.back();
  return true;
}

void LogSeries::delete_old(unsigned keep_files, unsigned keep_days, std::time_t now) const {
  std::vector<SeriesFile> files;
  if (!list(files) || files.empty()) return;
  files.pop_back();
  const std::size_t surplus = keep_files == 0 || files.size() + 1 <= keep_files ? 0 : files.size() + 1 - keep_files;
  const unsigned earliest = keep_days == 0 ? 0 : earliest_day_kept(keep_days, now);
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i < surplus || files[i].day < earliest) delete_unless_held(files[i]);
  }
}

void LogSeries::delete_unless_held(SeriesFile file) const {
  const std::string path = path_of(file);
  const ForkDelay fork_delay;
  const Descriptor opened(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY));
  struct stat status = {};
  if (!opened || fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (flock(opened.get(), LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
}

unsigned LocalDay::number_of(std::time_t moment) {
  if (moment >= begin_ && moment < end_) return number_;
  const ForkDelay fork_delay;
  const std::tm fields = local_fields(moment);
  begin_ = beginning_of_day(fields, 0);
  end_ = beginning_of_day(fields, 1);
  return number_ = day_number(fields);
}

}  // namespace qzlog
