#include "tools/count/batch_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <utility>

#include "tools/logs/log_inputs.h"
#include "tools/system/command_error.h"
#include "tools/system/file_replacement.h"
#include "tools/system/host_name.h"
#include "tools/system/signal_delay.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kSuffix = ".counts";
constexpr off_t kMostBytes = off_t{1} << 30;

[[noreturn]] void refuse(const std::string& text) { throw CommandError(kExitCannotRun, text); }

struct FolderCloser {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

FileDescriptor open_folder(const std::string& path, bool may_make) {
  if (may_make && ::mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) refuse_to_write(path, errno);
  FileDescriptor folder(open_path(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.get() < 0) refuse("cannot open the folder '" + path + "': " + std::strerror(errno));
  return folder;
}

/// No other process of any host has the same.
std::string writer_name() {
  std::string host = host_name();
  std::replace(host.begin(), host.end(), '/', '_');
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return host + '-' + std::to_string(::getpid()) + '-' + std::to_string(now.count());
}

}  // namespace

BatchFolder::BatchFolder(std::string path, bool may_make)
    : path_(std::move(path)), folder_(open_folder(path_, may_make)), writer_(writer_name()) {}

std::string BatchFolder::path_of(const std::string& name) const { return path_in(path_, name); }

void BatchFolder::write_new(const CountBatch& batch) {
  write(writer_ + '-' + std::to_string(++written_) + std::string(kSuffix), batch);
}

void BatchFolder::write_folded(const CountBatch& batch) const { write(kFolded, batch); }

void BatchFolder::write(const std::string& name, const CountBatch& batch) const {
  const std::string path = path_of(name);
  const SignalDelay delay;  // or the new file would be left behind
  FileReplacement(path, path, std::nullopt, batch_text(batch)).take_effect();
}

std::vector<std::string> BatchFolder::names() const {
  const std::unique_ptr<DIR, FolderCloser> folder(::opendir(path_.c_str()));
  if (folder == nullptr) refuse("cannot read the folder '" + path_ + "': " + std::strerror(errno));
  std::vector<std::string> names;
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(folder.get());
    if (entry == nullptr) break;
    const std::string_view name(entry->d_name);
    if (!name.starts_with('.') && name.ends_with(kSuffix)) names.emplace_back(name);
  }
  if (errno != 0) refuse("cannot read the folder '" + path_ + "': " + std::strerror(errno));
  std::sort(names.begin(), names.end());
  std::stable_partition(names.begin(), names.end(), [](const std::string& name) { return name == kFolded; });
  return names;
}

CountBatch BatchFolder::read(const std::string& name) const {
  const std::string path = path_of(name);
  struct stat status = {};
  if (::stat(path.c_str(), &status) == 0 && (!S_ISREG(status.st_mode) || status.st_size > kMostBytes)) {
    refuse("'" + path + "' is no file of counts, or has more than 1 GiB");
  }
  try {
    return parse_batch(read_file(path));
  } catch (const BadBatch& fault) {
    refuse("'" + path + "': " + fault.what() +
           ". What it counts is missing without it: put a copy of it back, or remove it and count its entries again");
  }
}

void BatchFolder::remove(const std::string& name) const {
  const std::string path = path_of(name);
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) refuse_to_write(path, errno);
}

}  // namespace qzlog_tool
