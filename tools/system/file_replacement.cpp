#include "tools/system/file_replacement.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

#include "tools/compiler/text/hexadecimal.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {
namespace {

constexpr mode_t kPermissions = 0777;  ///< without set-user-ID and its like: the file may get another owner
constexpr mode_t kNewFile = 0666;
constexpr int kMaximumAttempts = 100;

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// Short, so that it fits wherever the target's name does, and nothing that looks for names like the target's takes it.
std::string new_name(int attempt) {
  std::uint64_t number = 0;
  if (::getrandom(&number, sizeof number, 0) != static_cast<ssize_t>(sizeof number)) {
    number = static_cast<std::uint64_t>(::getpid()) * kMaximumAttempts + static_cast<std::uint64_t>(attempt);
  }
  return ".qzlog-" + qzlog_compiler::hexadecimal(number, 16, qzlog_compiler::HexadecimalLetters::kSmall);
}

FileDescriptor create_in(const std::string& folder, mode_t mode, std::string& path, const std::string& shown_path) {
  int error = EEXIST;
  for (int attempt = 0; attempt < kMaximumAttempts && error == EEXIST; ++attempt) {
    path = folder + '/' + new_name(attempt);
    const int descriptor = open_path(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor >= 0) return FileDescriptor(descriptor);
    error = errno;
  }
  path.clear();
  refuse_to_write(shown_path, error);
}

/// Returns 0 or the errno of the failure. Some file systems have nothing to wait for, and say so with EINVAL.
int sync_to_disk(const FileDescriptor& file) {
  while (::fsync(file.get()) != 0) {
    if (errno == EINVAL) return 0;
    if (errno != EINTR) return errno;
  }
  return 0;
}

/// None where it may not be read, only written to; its new entry is then on the disk whenever the host likes.
std::optional<FileDescriptor> open_folder(const std::string& folder, const std::string& shown_path) {
  const int descriptor = open_path(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor >= 0) return FileDescriptor(descriptor);
  if (errno == EACCES) return std::nullopt;
  refuse_to_write(shown_path, errno);
}

int write_completely(FileDescriptor& file, std::optional<mode_t> mode, std::string_view content) {
  if (mode && ::fchmod(file.get(), *mode & kPermissions) != 0) return errno;
  int error = write_all(file.get(), content.data(), content.size());
  if (error == 0) error = sync_to_disk(file);
  const int closed = file.close();
  return error != 0 ? error : closed;
}

}  // namespace

FileReplacement::FileReplacement(const std::string& target, const std::string& shown_path, std::optional<mode_t> mode,
                                 std::string_view content)
    : target_(target), shown_path_(shown_path) {
  FileDescriptor file = create_in(folder_of(target), mode.value_or(kNewFile) & kPermissions, path_, shown_path);
  const int error = write_completely(file, mode, content);
  if (error == 0) return;
  ::unlink(path_.c_str());
  refuse_to_write(shown_path, error);
}

FileReplacement::FileReplacement(FileReplacement&& other) noexcept
    : target_(std::move(other.target_)),
      shown_path_(std::move(other.shown_path_)),
      path_(std::exchange(other.path_, std::string())) {}

FileReplacement::~FileReplacement() {
  if (!path_.empty()) ::unlink(path_.c_str());
}

// The folder is opened first: what makes that fail has to be known before the file is another one.
void FileReplacement::take_effect() {
  const std::optional<FileDescriptor> folder = open_folder(folder_of(target_), shown_path_);
  if (::rename(path_.c_str(), target_.c_str()) != 0) refuse_to_write(shown_path_, errno);
  path_.clear();
  const int error = folder ? sync_to_disk(*folder) : 0;
  if (error != 0) refuse_to_write(shown_path_, error);
}

}  // namespace qzlog_tool
