#include "ship/file/file_sender.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <vector>

#include "ship/file/lock_wait.h"
#include "ship/plugin/plugin_call.h"

namespace {

using qzlog_ship::fail_for_good;
using qzlog_ship::fail_for_now;
using qzlog_ship::RecordForm;
using qzlog_ship::view_of;

std::string reason_of(int error) { return std::strerror(error); }

/// Behind the last line feed; -1, with errno, when it cannot be read: the next line would else go on a torn one.
off_t end_of_lines(int descriptor, off_t size) {
  std::vector<char> block(65536);
  for (off_t end = size; end > 0;) {
    const off_t begin = std::max<off_t>(0, end - static_cast<off_t>(block.size()));
    const ssize_t count = ::pread(descriptor, block.data(), static_cast<std::size_t>(end - begin), begin);
    if (count < 0 && errno == EINTR) continue;
    if (count >= 0 && count < end - begin) errno = EIO;  // a part does not tell where the last line begins
    if (count < end - begin) return -1;
    const auto at = std::string_view(block.data(), static_cast<std::size_t>(count)).rfind('\n');
    if (at != std::string_view::npos) return begin + static_cast<off_t>(at) + 1;
    end = begin;
  }
  return 0;
}

}  // namespace

/// While it lives no other sender writes to the file.
class qzlog_sender::Lock {
 public:
  Lock(int descriptor, const std::string& path) : descriptor_(descriptor) {
    qzlog_ship::wait_for_lock(path, [descriptor] { return ::flock(descriptor, LOCK_EX | LOCK_NB); });
  }
  ~Lock() { ::flock(descriptor_, LOCK_UN); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  int descriptor_;
};

qzlog_sender::qzlog_sender(const qzlog_settings& settings, qzlog_ship::PluginOptions options)
    : faults_(options),
      file_(qzlog_ship::RecordFileName::of(settings, options)),
      drops_doubles_(options.take_flag("drop-doubles", false)),
      syncs_(options.take_flag("sync", true)) {
  options.refuse_others(std::string("keep, drop-doubles, sync; and, for trying out what fails, ") +
                        qzlog_ship::FaultPlan::kKeys);
  if (drops_doubles_ && file_.form != RecordForm::kRecords) {
    fail_for_good("--option drop-doubles=yes needs --option keep=records, where identities are kept");
  }
  faults_.refuse_while_down();
  open();
}

// A pipe would take lines that nobody keeps.
void qzlog_sender::open() {
  descriptor_ =
      qzlog_ship::Descriptor(::open(file_.path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0644));
  if (descriptor_.get() < 0) {
    const int error = errno;
    const std::string text = "cannot write to '" + file_.path + "': " + reason_of(error);
    if (error == EACCES || error == EROFS || error == EISDIR || error == EPERM) fail_for_good(text);
    fail_for_now(text);
  }
  struct stat status = {};
  if (::fstat(descriptor_.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
    fail_for_good("'" + file_.path + "' is no regular file: move it away");
  }
  const Lock lock(descriptor_.get(), file_.path);
  cut_off_torn_line();
  if (drops_doubles_) learn_identities();
}

// Of a sender that was ended while it wrote.
void qzlog_sender::cut_off_torn_line() {
  struct stat status = {};
  if (::fstat(descriptor_.get(), &status) != 0)
    fail_for_now("cannot look at '" + file_.path + "': " + reason_of(errno));
  const off_t end = end_of_lines(descriptor_.get(), status.st_size);
  if (end < 0 || (end != status.st_size && ::ftruncate(descriptor_.get(), end) != 0)) {
    fail_for_now("cannot cut off a torn line of '" + file_.path + "': " + reason_of(errno));
  }
}

void qzlog_sender::learn_identities() {
  std::ifstream file(file_.path, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    known_.emplace(qzlog_ship::read_record(line, file_.form).identity);
  }
}

/// False where the result is known without writing.
bool qzlog_sender::takes(const qzlog_record& record, qzlog_result& result) {
  if (faults_.refuses(view_of(record.identity))) {
    result = {QZLOG_REFUSED, "it is one of those that --option refuse names"};
    return false;
  }
  if (drops_doubles_ && !known_.emplace(view_of(record.identity)).second) {
    result.fate = QZLOG_DOUBLE;
    return false;
  }
  result.fate = QZLOG_ACKNOWLEDGED;
  return true;
}

void qzlog_sender::send(const qzlog_record* records, std::size_t count, std::uint32_t timeout_ms,
                        qzlog_result* results) {
  faults_.refuse_while_down();
  if (!faults_.wait(timeout_ms)) fail_for_now("it took too long");
  if (faults_.fails()) fail_for_now("it failed, as it was told to");
  const std::size_t sent = faults_.cuts() ? faults_.cut_at(count) : count;
  text_.clear();
  for (std::size_t index = 0; index < sent; ++index) {
    if (takes(records[index], results[index])) append_record(records[index], file_.form, text_);
  }
  try {
    write(text_);
  } catch (...) {
    known_.clear();
    std::fill(results, results + count, qzlog_result{});
    throw;
  }
  if (sent == count) {
    for (std::size_t index = 0; index < count; ++index) {
      if (faults_.loses_acknowledgement()) results[index] = {};
    }
    return;
  }
  std::fill(results, results + count, qzlog_result{});
  fail_for_now("the connection broke, as it was told to");
}

// All of it or nothing.
void qzlog_sender::write(const std::string& text) {
  if (text.empty()) return;
  const Lock lock(descriptor_.get(), file_.path);
  struct stat status = {};
  if (::fstat(descriptor_.get(), &status) != 0) fail_for_now(reason_of(errno));
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t count = ::write(descriptor_.get(), text.data() + at, text.size() - at);
    if (count >= 0) {
      at += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      const int error = errno;
      [[maybe_unused]] const int cut = ::ftruncate(descriptor_.get(), status.st_size);
      fail_for_now("cannot write to '" + file_.path + "': " + reason_of(error));
    }
  }
  while (syncs_ && ::fdatasync(descriptor_.get()) != 0 && errno != EINVAL) {
    if (errno != EINTR) fail_for_now("cannot bring '" + file_.path + "' to the disk: " + reason_of(errno));
  }
}
