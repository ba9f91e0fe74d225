#include "tools/logs/log_inputs.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <set>

#include "qzlog/log_util.h"
#include "tools/logs/unreadable_input.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kLinesSuffix = ".jsonl";
constexpr std::size_t kSeriesSuffix = sizeof ".YYYYMMDD.NNNN" - 1;

struct FolderCloser {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

/// 0, or an errno.
int for_each_name(const std::string& path, const std::function<void(const char*)>& visit) {
  const std::unique_ptr<DIR, FolderCloser> folder(::opendir(path.empty() ? "." : path.c_str()));
  if (folder == nullptr) return errno;
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(folder.get());
    if (entry == nullptr) return errno;
    visit(entry->d_name);
  }
}

/// The place in the series; nothing for another name. A writer begins with the number 1.
std::optional<SeriesPlace> place_of(const char* name, const std::string& prefix) {
  unsigned short year = 0;
  unsigned short month = 0;
  unsigned short day = 0;
  unsigned short number = 0;
  if (is_a_valid_text_log(name, prefix.c_str(), &year, &month, &day, &number) == 0 || number == 0) return std::nullopt;
  return SeriesPlace{year * 10000U + month * 100U + day, number};
}

[[noreturn]] void refuse_folder(const std::string& folder, int error) {
  throw UnreadableInput("cannot read '" + (folder.empty() ? "." : folder) + "': " + std::strerror(error));
}

std::vector<SeriesPlace> scan(const LogSeries& series) {
  std::vector<SeriesPlace> places;
  const int error = for_each_name(series.folder, [&](const char* name) {
    if (const std::optional<SeriesPlace> place = place_of(name, series.prefix)) places.push_back(*place);
  });
  if (error != 0 && error != ENOENT && error != ENOTDIR) refuse_folder(series.folder, error);
  std::sort(places.begin(), places.end());
  return places;
}

/// A file of which nothing is to be known stays in: opening it will tell why.
bool is_no_file(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

bool is_folder(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool is_there(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0;
}

void add_files(const LogSeries& series, std::vector<std::string>& paths) {
  for (const SeriesPlace place : series_files(series)) paths.push_back(series.path_of(place));
}

}  // namespace

std::string LogSeries::path_of(SeriesPlace place) const {
  const auto field = [](unsigned value) { return static_cast<unsigned short>(value); };
  const std::unique_ptr<char[]> name(make_text_log_filename(prefix.c_str(), field(place.day / 10000),
                                                            field(place.day / 100 % 100), field(place.day % 100),
                                                            field(place.number), nullptr));
  return path_in(folder, name.get());
}

std::optional<LogSeries> series_of(const std::string& path) {
  const std::string prefix = path.substr(path.rfind('/') + 1);  // npos + 1 is 0
  if (prefix.empty()) return std::nullopt;
  return LogSeries{folder_of(path), prefix};
}

// A folder that changes while it is read may show a new file and not the one that was begun just before it. Those that
// are shown once have all been begun when it is read again.
std::vector<SeriesPlace> series_files(const LogSeries& series) {
  std::vector<SeriesPlace> first = scan(series);
  if (first.size() < 2) return first;
  std::vector<SeriesPlace> places = scan(series);
  std::erase_if(places, [&](SeriesPlace place) { return place > first.back(); });
  return places;
}

FolderLogs logs_in(const std::string& folder) {
  std::set<std::string> prefixes;
  FolderLogs logs;
  const int error = for_each_name(folder, [&](const char* text) {
    const std::string_view name(text);
    if (name.starts_with('.')) return;
    if (name.ends_with(kLinesSuffix)) {
      const std::string path = path_in(folder, name);
      if (!is_no_file(path)) logs.files.push_back(path);
    } else if (name.size() > kSeriesSuffix) {
      std::string prefix(name.substr(0, name.size() - kSeriesSuffix));
      if (place_of(text, prefix)) prefixes.insert(std::move(prefix));
    }
  });
  if (error != 0) refuse_folder(folder, error);
  for (const std::string& prefix : prefixes) logs.series.push_back({folder, prefix});
  std::sort(logs.files.begin(), logs.files.end());
  return logs;
}

std::string path_in(const std::string& folder, std::string_view name) {
  if (folder.empty()) return std::string(name);
  std::string path = folder.ends_with('/') ? folder : folder + '/';
  return path.append(name);
}

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return "";
  return slash == 0 ? "/" : path.substr(0, slash);
}

InputFiles input_files(const std::string& operand) {
  if (operand == "-") return {{operand}};
  InputFiles files;
  files.were_found = true;
  if (is_folder(operand)) {
    const FolderLogs logs = logs_in(operand);
    for (const LogSeries& series : logs.series) add_files(series, files.paths);
    files.paths.insert(files.paths.end(), logs.files.begin(), logs.files.end());
    if (!files.paths.empty()) return files;
    throw UnreadableInput("the folder '" + operand + "' has no log: neither files PREFIX.YYYYMMDD.NNNN nor *.jsonl");
  }
  const std::optional<LogSeries> series = series_of(operand);
  if (series && !is_there(operand)) add_files(*series, files.paths);
  if (!files.paths.empty()) return files;
  return {{operand}};
}

}  // namespace qzlog_tool
