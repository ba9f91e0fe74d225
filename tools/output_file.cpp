#include "tools/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "tools/command_error.h"
#include "tools/file_descriptor.h"

namespace qzlog_tool {
namespace {

[[noreturn]] void fail(const std::string& path, int error) {
  throw CommandError(kExitCannotRun, "cannot write '" + path + "': " + std::strerror(error));
}

void write_content(const FileDescriptor& file, std::string_view content, const std::string& path) {
  const int error = write_all(file.get(), content.data(), content.size());
  if (error != 0) fail(path, error);
}

FileDescriptor open_output(const std::string& path, int flags, const std::string& shown_path) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, 0666);
  if (descriptor < 0) fail(shown_path, errno);
  return FileDescriptor(descriptor);
}

std::optional<struct stat> status_of(const std::string& path) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

bool holds_already(const std::string& path, const struct stat& status, std::string_view content) {
  if (static_cast<std::uintmax_t>(status.st_size) != content.size()) return false;
  try {
    return read_file(path) == content;
  } catch (const CommandError&) {
    return false;  // a file that cannot be read can still be replaced
  }
}

/// A new file beside the target, removed again unless it became the target.
class Replacement {
 public:
  explicit Replacement(std::string target)
      : target_(std::move(target)),
        path_(target_ + ".tmp" + std::to_string(::getpid())),
        file_(open_output(path_, O_CREAT | O_EXCL, target_)) {}
  ~Replacement() {
    if (!renamed_) ::unlink(path_.c_str());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  void keep_permissions(mode_t mode) {
    if (::fchmod(file_.get(), mode & 07777) != 0) fail(target_, errno);
  }

  void finish(std::string_view content) {
    write_content(file_, content, target_);
    if (::rename(path_.c_str(), target_.c_str()) != 0) fail(target_, errno);
    renamed_ = true;
  }

 private:
  std::string target_;
  std::string path_;
  FileDescriptor file_;
  bool renamed_ = false;
};

/// Follows symbolic links, so that the file they lead to is replaced and not the link.
std::string resolved(const std::string& path) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(path, error);
  return error ? path : target.string();
}

}  // namespace

void write_file(const std::string& path, std::string_view content) {
  if (path == "-") return write_content(FileDescriptor(STDOUT_FILENO), content, "standard output");
  const std::optional<struct stat> status = status_of(path);
  if (status && !S_ISREG(status->st_mode)) return write_content(open_output(path, 0, path), content, path);
  if (status && holds_already(path, *status, content)) return;
  Replacement replacement(resolved(path));
  if (status) replacement.keep_permissions(status->st_mode);
  replacement.finish(content);
}

void refuse_overwriting(const std::string& input, const std::string& output) {
  std::error_code missing;
  if (input.empty() || input == "-" || !std::filesystem::equivalent(input, output, missing)) return;
  throw CommandError(kExitCannotRun, "the output '" + output + "' is one of the input files");
}

}  // namespace qzlog_tool
